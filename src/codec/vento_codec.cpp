#include "codec/vento_codec.h"

#include <algorithm>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "codec/cls_huffman.h"

namespace {

using vento::codec::clsHuffman;
using vento::codec::KeyArray;

// Programs have been compiled with these sizes.
static_assert(sizeof(void*) != 8 || (sizeof(vento_codec_options) == 32 && sizeof(vento_codec_info) == 40));
static_assert(sizeof(vento_codec_error) == 256 && sizeof(vento_codec_status) == 4);

/// What the handler throws to end a call.
struct Stopped {};

template <std::size_t size>
void Put(char (&to)[size], std::string_view text) {
    to[text.copy(to, size - 1)] = '\0';
}

vento_codec_status Fail(vento_codec_error* error, vento_codec_status status, const char* description) {
    if (error != nullptr) Put(error->description, description);
    return status;
}

/// Does `work`, and tells what it throws.
vento_codec_status Guard(vento_codec_error* error, const auto& work) noexcept {
    if (error != nullptr) *error = {};
    try {
        work();
        return VENTO_CODEC_OK;
    } catch (const vento::codec::RaisedError& raised) {
        if (error != nullptr) {
            error->number = vento::codec::RaisedError::Number();
            Put(error->source, raised.Source());
        }
        return Fail(error, VENTO_CODEC_RAISED, raised.what());
    } catch (const vento::codec::RangeError& range) {
        return Fail(error, VENTO_CODEC_RANGE, range.what());
    } catch (const vento::codec::OverflowError& overflow) {
        return Fail(error, VENTO_CODEC_OVERFLOW, overflow.what());
    } catch (const std::bad_alloc&) {
        return Fail(error, VENTO_CODEC_NO_MEMORY, vento::codec::MemoryError().what());
    } catch (const std::length_error&) {
        return Fail(error, VENTO_CODEC_NO_MEMORY, vento::codec::MemoryError().what());
    } catch (const Stopped&) {
        return Fail(error, VENTO_CODEC_STOPPED, vento_codec_status_text(VENTO_CODEC_STOPPED));
    } catch (const std::exception& other) {
        return Fail(error, VENTO_CODEC_UNFORESEEN, other.what());
    } catch (...) {
        return Fail(error, VENTO_CODEC_UNFORESEEN, vento_codec_status_text(VENTO_CODEC_UNFORESEEN));
    }
}

std::optional<KeyArray> KeyOf(const vento_codec_options* options) {
    if (options == nullptr || options->key == nullptr) return std::nullopt;
    KeyArray key(options->key_rows);
    for (std::size_t row = 0; row < key.size(); ++row)
        key[row] = {options->key[2 * row], options->key[2 * row + 1]};
    return key;
}

clsHuffman CodecFor(const vento_codec_options* options) {
    clsHuffman codec;
    if (options != nullptr && options->progress != nullptr) {
        codec.Progress = [progress = options->progress, context = options->context](std::int16_t& procent) {
            if (progress(context, procent) != 0) throw Stopped();
        };
    }
    return codec;
}

}  // namespace

// NOLINTBEGIN(readability-identifier-naming): names as C has them

size_t vento_codec_encode_bound(size_t source_length) {
    return clsHuffman::EncodeBound(source_length);
}

vento_codec_status vento_codec_encode(const uint8_t* source, size_t source_length, uint8_t* container,
                                      size_t room, size_t* container_length,
                                      const vento_codec_options* options, vento_codec_error* error) {
    return Guard(error, [&] {
        const auto key = KeyOf(options);
        *container_length =
            CodecFor(options).EncodeBytes({source, source_length}, {container, room}, key ? &*key : nullptr);
    });
}

vento_codec_status vento_codec_decode_bound(const uint8_t* container, size_t container_length, size_t* bound,
                                            vento_codec_error* error) {
    return Guard(error, [&] { *bound = clsHuffman::DecodeBound({container, container_length}); });
}

vento_codec_status vento_codec_decode(const uint8_t* container, size_t container_length, uint8_t* decoded,
                                      size_t room, size_t* decoded_length, int* uncoded,
                                      const vento_codec_options* options, vento_codec_error* error) {
    std::optional<KeyArray> key;
    const auto status = Guard(error, [&] {
        key = KeyOf(options);
        const auto result = CodecFor(options).DecodeBytes({container, container_length}, {decoded, room},
                                                          key ? &*key : nullptr);
        *decoded_length = result.size;
        if (uncoded != nullptr) *uncoded = result.uncoded ? 1 : 0;
    });
    for (std::size_t row = 0; key && row < key->size(); ++row)
        std::ranges::copy((*key)[row], options->key + 2 * row);
    return status;
}

vento_codec_status vento_codec_read_info(const uint8_t* container, size_t container_length,
                                         const vento_codec_options* options, vento_codec_info* info,
                                         vento_codec_error* error) {
    return Guard(error, [&] {
        const auto key = KeyOf(options);
        const auto read = clsHuffman::Info({container, container_length}, key ? &*key : nullptr);
        *info = {};
        info->form = static_cast<vento_codec_form>(read.form);
        info->source_length = read.sourceLength;
        info->data_offset = read.dataOffset;
        info->symbols = read.symbols;
        info->shortest_code = read.shortestCode;
        info->longest_code = read.longestCode;
        info->checksum = read.checksum;
    });
}

const char* vento_codec_status_text(vento_codec_status status) {
    switch (status) {
        case VENTO_CODEC_OK:
            return "done";
        case VENTO_CODEC_RAISED:
            return "the data are not what they claim to be";
        case VENTO_CODEC_RANGE:
            return "something points outside what it points into, or there is not enough room";
        case VENTO_CODEC_OVERFLOW:
            return "a number does not fit the field that it belongs in";
        case VENTO_CODEC_NO_MEMORY:
            return "there is not enough memory";
        case VENTO_CODEC_STOPPED:
            return "the progress function has ended the call";
        case VENTO_CODEC_UNFORESEEN:
            break;
    }
    return "something unforeseen has happened";
}

// NOLINTEND(readability-identifier-naming)
