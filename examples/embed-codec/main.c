/* The codec from C: a text with a key there and back, and what a container and an error say of themselves. */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vento/codec/vento_codec.h>

enum { key_rows = 64 };

static int show_progress(void* context, int16_t per_cent) {
    fprintf(context, "%d %%\n", per_cent);
    return 0; /* anything else would end the call */
}

static int there_and_back(const char* text, const vento_codec_options* options, vento_codec_error* error) {
    const size_t length = strlen(text);
    const size_t bound = vento_codec_encode_bound(length);
    uint8_t* const container = malloc(bound);
    uint8_t* const decoded = malloc(length);
    size_t size = 0;
    vento_codec_info info;
    int status = VENTO_CODEC_NO_MEMORY;
    if (container != NULL && decoded != NULL) {
        status = vento_codec_encode((const uint8_t*)text, length, container, bound, &size, options, error);
    }
    if (status == VENTO_CODEC_OK) status = vento_codec_read_info(container, size, options, &info, error);
    if (status == VENTO_CODEC_OK) {
        printf("%u symbols, codes of %u to %u bits\n", (unsigned)info.symbols, (unsigned)info.shortest_code,
               (unsigned)info.longest_code);
        status = vento_codec_decode(container, size, decoded, length, &size, NULL, options, error);
    }
    if (status == VENTO_CODEC_OK)
        puts(size == length && memcmp(text, decoded, size) == 0 ? "the text is back" : "the text is lost");
    free(container);
    free(decoded);
    return status;
}

int main(void) {
    int64_t key[2 * key_rows];
    vento_codec_options options = {key, key_rows, show_progress, stderr};
    vento_codec_error error;
    size_t bound = 0;
    for (size_t i = 0; i < sizeof key / sizeof *key; ++i)
        key[i] = i % 2 == 0 ? 17 : 4;
    if (there_and_back("Here and there, there and back again", &options, &error) != VENTO_CODEC_OK) {
        fprintf(stderr, "%s\n", error.description);
        return 1;
    }
    if (vento_codec_decode_bound((const uint8_t*)"MA1\r", 4, &bound, &error) == VENTO_CODEC_RAISED)
        printf("%s: %s\n", error.source, error.description);
    return 0;
}
