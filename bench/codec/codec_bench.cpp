// The codec beside those that one would reach for instead, in one run on one core: CPU time, best of several
// rounds, in each of which all of them take their turn.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <exception>
#include <limits>
#include <string>
#include <vector>

#include "allocations.h"
#include "codec/inputs.h"
#include "codec/peers.h"
#include "codec/report.h"

namespace bench {
namespace {

struct Options {
    std::string textFile = "/usr/share/common-licenses/GPL-3";
    std::string executableFile = "/proc/self/exe";
    std::string report;
    int rounds = 7;
};

/// Seconds of CPU time that this thread has used.
double Now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// One peer's work on one input, as often as it takes to be long enough for the clock.
class Contest {
  public:
    Contest(Peer peer, const Bytes& source) : peer_(std::move(peer)), source_(source) {
        peer_.encode(source_, packed_);
        decoded_.resize(source_.size());
    }

    void Round() {
        encode_ = std::min(encode_, Time([&] { peer_.encode(source_, packed_); }));
        if (!peer_.decode) return;
        std::ranges::fill(decoded_, std::uint8_t{0});
        decode_ = std::min(decode_, Time([&] { peer_.decode(packed_, decoded_); }));
        if (decoded_ != source_) throw std::runtime_error(peer_.name + " does not give back its source");
    }

    [[nodiscard]] double EncodeSpeed() const { return Speed(encode_); }
    [[nodiscard]] double DecodeSpeed() const { return Speed(decode_); }
    [[nodiscard]] double Size() const {
        return static_cast<double>(packed_.size()) / static_cast<double>(source_.size());
    }

  private:
    template <class Work>
    [[nodiscard]] double Time(const Work& work) const {
        const std::size_t times = std::max<std::size_t>(1, (std::size_t{4} << 20) / source_.size());
        const double start = Now();
        for (std::size_t i = 0; i < times; ++i)
            work();
        return (Now() - start) / static_cast<double>(times);
    }
    [[nodiscard]] double Speed(double seconds) const {
        return static_cast<double>(source_.size()) / seconds / 1e6;
    }

    Peer peer_;
    const Bytes& source_;
    Bytes packed_;
    Bytes decoded_;
    double encode_ = std::numeric_limits<double>::max();
    double decode_ = std::numeric_limits<double>::max();
};

enum Place { vento, huff0, huff0Four, huff0Double, zlib, libdeflate, memcpy };

std::vector<Contest> Measure(const Bytes& source, int rounds) {
    std::vector<Contest> contests;
    for (const Peer& peer :
         {Vento(), Huff0(1, 1), Huff0(4, 1), Huff0(4, 2), ZlibHuffmanOnly(), Libdeflate(), Memcpy()})
        contests.emplace_back(peer, source);
    for (int round = 0; round < rounds; ++round) {
        for (auto& contest : contests)
            contest.Round();
    }
    return contests;
}

std::string Speeds(const std::vector<Input>& inputs, int rounds) {
    Table encode{{"encode", "MB/s", "huff0 1X", "huff0 4X", "zlib", "memcpy"}, {}};
    Table decode{{"decode", "MB/s", "huff0 1X1", "huff0 4X1", "huff0 4X2", "libdeflate", "memcpy"}, {}};
    Table size{{"size", "vento", "huff0", "zlib"}, {}};
    for (const Input& input : inputs) {
        const auto results = Measure(input.bytes, rounds);
        std::vector<std::string> encodeRow = {input.name, Whole(results[vento].EncodeSpeed())};
        for (const Place peer : {huff0, huff0Four, zlib, memcpy})
            encodeRow.push_back(Ratio(results[vento].EncodeSpeed() / results[peer].EncodeSpeed()));
        encode.rows.push_back(encodeRow);
        std::vector<std::string> decodeRow = {input.name, Whole(results[vento].DecodeSpeed())};
        for (const Place peer : {huff0, huff0Four, huff0Double, libdeflate, memcpy})
            decodeRow.push_back(Ratio(results[vento].DecodeSpeed() / results[peer].DecodeSpeed()));
        decode.rows.push_back(decodeRow);
        std::vector<std::string> sizeRow = {input.name};
        for (const Place peer : {vento, huff0, zlib})
            sizeRow.push_back(Ratio(100 * results[peer].Size()) + " %");
        size.rows.push_back(sizeRow);
        std::fputs((encode.Markdown() + "\n" + decode.Markdown() + "\n").c_str(), stderr);
    }
    return encode.Markdown() + "\n" + decode.Markdown() + "\n" + size.Markdown();
}

/// What the codec takes beside its input and its output.
std::string WorkingMemory(const Bytes& source) {
    const Peer peer = Vento();
    Bytes packed;
    Bytes decoded;
    peer.encode(source, packed);
    decoded.resize(source.size());
    packed.resize(packed.size());
    vento::bench::ForgetPeak();
    peer.encode(source, packed);
    const auto encode = vento::bench::PeakBytes();
    vento::bench::ForgetPeak();
    peer.decode(packed, decoded);
    return "Working memory beside input and output, the stack not counted: " +
           Whole(static_cast<double>(encode) / 1024) + " KiB to encode, " +
           Whole(static_cast<double>(vento::bench::PeakBytes()) / 1024) + " KiB to decode.\n";
}

void Run(const Options& options) {
    const auto large = MakeInputs(std::size_t{64} << 20, options.textFile, options.executableFile);
    const auto small = MakeInputs(4096, options.textFile, options.executableFile);
    const std::string text = "\nInputs of 64 MiB, and how many times as fast as the others:\n\n" +
                             Speeds(large, options.rounds) + "\nInputs of 4 KiB:\n\n" +
                             Speeds({small.front()}, 5 * options.rounds) + "\n" +
                             WorkingMemory(large.front().bytes) + "\n";
    std::fputs(text.c_str(), stdout);
    if (!options.report.empty()) ReplaceSection(options.report, "scripts/bench", text);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::Options options;
    CLI::App app("Measures the codec beside others.");
    app.add_option("--text", options.textFile, "A text, which is repeated as often as it takes");
    app.add_option("--executable", options.executableFile, "A native executable");
    app.add_option("--report", options.report, "A Markdown file to put the results into");
    app.add_option("--rounds", options.rounds, "How often everything is measured");
    CLI11_PARSE(app, argc, argv);
    try {
        bench::Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
