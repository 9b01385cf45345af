// Packs a file and unpacks it again, and keeps a text in a few bytes: all that the codec does, in one page.
//
//     embed_codec SOURCE CONTAINER COPY

#include <vento/codec/cls_huffman.h>

#include <cstdint>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

using vento::codec::clsHuffman;
using vento::codec::KeyArray;
using vento::codec::RaisedError;

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: embed_codec SOURCE CONTAINER COPY\n";
        return 64;
    }
    try {
        clsHuffman codec;
        codec.Progress = [](std::int16_t& procent) { std::cerr << '\r' << procent << " %" << std::flush; };

        codec.EncodeFile(argv[1], argv[2]);
        std::vector<std::uint8_t> bytes;
        const bool uncoded = codec.DecodeFile(argv[2], bytes, argv[3]);
        std::cerr << '\n';
        std::cout << bytes.size() << " bytes, " << (uncoded ? "stored" : "Huffman-coded") << '\n';

        // A text with a key: the container alone does not give it back.
        KeyArray key(64, {17, 4});
        const std::string text = "Sarà perché ti amo, sarà perché ti cerco ancora";
        const std::string container = codec.EncodeString(text, &key);
        std::cout << (codec.DecodeString(container, &key) == text ? "the text is back" : "the text is lost")
                  << '\n';
        return 0;
    } catch (const RaisedError& error) {
        std::cerr << error.Source() << ": " << error.Description() << '\n';
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
    }
    return 1;
}
