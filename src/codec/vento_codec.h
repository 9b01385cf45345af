#ifndef VENTO_CODEC_H
#define VENTO_CODEC_H

/* HE3 for C, and for languages that call C: containers for bytes, as cls_huffman.h has them for C++. Nothing
 * is global: calls from several threads at a time need no lock, as long as they share no buffer, key or
 * error. No function keeps a pointer beyond its call, none throws, and null is allowed where that is said. */

/* NOLINTBEGIN(readability-identifier-naming): names as C has them */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __ELF__
#pragma GCC visibility push(default)
#endif

typedef enum vento_codec_status {
    VENTO_CODEC_OK = 0,
    /* What the codec can say of the data: no container, or a damaged one. The error has number and source. */
    VENTO_CODEC_RAISED = 1,
    /* Something points outside what it points into, or the buffer of the caller has not enough room. */
    VENTO_CODEC_RANGE = 2,
    /* A number does not fit the field that it belongs in; more than 2,147,483,647 bytes, for one. */
    VENTO_CODEC_OVERFLOW = 3,
    VENTO_CODEC_NO_MEMORY = 4,
    /* The progress function has said so. */
    VENTO_CODEC_STOPPED = 5,
    VENTO_CODEC_UNFORESEEN = 6
} vento_codec_status;

/* Why a call has failed. The texts are English, end with a zero and are cut if they are too long. */
typedef struct vento_codec_error {
    uint32_t number; /* 0x80040000 with VENTO_CODEC_RAISED, otherwise 0 */
    char source[60];
    char description[192];
} vento_codec_error;

/* What may go with a call. All zeros is the same as none. */
typedef struct vento_codec_options {
    /* The rows of the key, two numbers each, one row behind the other; null for no key. The decoder
     * overwrites the first 12 rows with those that the container holds. */
    int64_t* key;
    size_t key_rows;
    /* Is told how far the call has come, in per cent; null if nobody wants to know. Anything but 0 ends the
     * call. The call's buffers and key must be left alone meanwhile. */
    int (*progress)(void* context, int16_t per_cent);
    void* context;
} vento_codec_options;

typedef enum vento_codec_form {
    VENTO_CODEC_FOREIGN = 0, /* no container */
    VENTO_CODEC_STORED = 1,  /* the source bytes as they are, behind four bytes that say so */
    VENTO_CODEC_CODED = 2
} vento_codec_form;

/* What stands in the header of a container. What follows source_length is 0 unless the form is the coded one.
 */
typedef struct vento_codec_info {
    vento_codec_form form;
    uint64_t source_length; /* bytes that come out, as a coded container claims */
    uint64_t data_offset;   /* where the coded data begin */
    uint32_t symbols;       /* byte values that have a code */
    uint32_t shortest_code; /* in bits */
    uint32_t longest_code;
    uint8_t checksum;
} vento_codec_info;

/* No source of so many bytes has a container of more bytes than this. */
size_t vento_codec_encode_bound(size_t source_length);

/* Puts a container of the source into `container`, which has room for `room` bytes, and its length into
 * `container_length`. The two must not overlap. `options` and `error` may be null. */
vento_codec_status vento_codec_encode(const uint8_t* source, size_t source_length, uint8_t* container,
                                      size_t room, size_t* container_length,
                                      const vento_codec_options* options, vento_codec_error* error);

/* Puts into `bound` how many bytes can come out of `container` at the most. `error` may be null. */
vento_codec_status vento_codec_decode_bound(const uint8_t* container, size_t container_length, size_t* bound,
                                            vento_codec_error* error);

/* Puts what is in `container` into `decoded`, which has room for `room` bytes, and its length into
 * `decoded_length`. `uncoded` becomes 1 if the bytes were not Huffman-coded: the container is a stored one,
 * or there is none and the bytes came through as they are. The two must not overlap; after a failure what is
 * in `decoded` does not matter. `uncoded`, `options` and `error` may be null. */
vento_codec_status vento_codec_decode(const uint8_t* container, size_t container_length, uint8_t* decoded,
                                      size_t room, size_t* decoded_length, int* uncoded,
                                      const vento_codec_options* options, vento_codec_error* error);

/* Reads the header of `container`. `options`, which matter for their key alone, and `error` may be null. The
 * key stays as it is. */
vento_codec_status vento_codec_read_info(const uint8_t* container, size_t container_length,
                                         const vento_codec_options* options, vento_codec_info* info,
                                         vento_codec_error* error);

/* What a status means, in English. */
const char* vento_codec_status_text(vento_codec_status status);

#ifdef __ELF__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

/* NOLINTEND(readability-identifier-naming) */

#endif
