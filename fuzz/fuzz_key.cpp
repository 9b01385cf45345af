#include "codec/oracle.h"
#include "console/codec_key.h"
#include "console/failure.h"
#include "fuzzing.h"

/// Any bytes as the codec's key; one that is taken is written and read again, and encodes and decodes what
/// the plain codec does.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vento::fuzzing;
    const auto read = [](const std::string& text) {
        return vento::console::ReadKey(Folder().Write("key", text));
    };
    try {
        const oracle::KeyArray key = read({reinterpret_cast<const char*>(data), size});
        Require(read(vento::console::KeyFields(key).dump()) == key,
                "a key that is written is read as it was");
        const oracle::Bytes source(data, data + size);
        const oracle::Outcome encoded = oracle::EncodeWithClass(source, key);
        Require(encoded == oracle::Encode(source, key), "the key encodes as it should");
        if (!encoded.error.empty()) return 0;
        const oracle::Outcome decoded = oracle::DecodeWithClass(encoded.bytes, key);
        Require(decoded == oracle::Decode(encoded.bytes, key), "the key decodes as it should");
        Require(!decoded.error.empty() || decoded.bytes == source, "and gives back what was encoded");
    } catch (const vento::console::Failure& failure) {
        Require(failure.Status() == vento::console::kUnusableInput, "a bad key is unusable input");
        RequireReadable(failure.Reason());
    }
    return 0;
}
