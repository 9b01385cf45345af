#include "console/run_log.h"

#include <gcrypt.h>

#include <array>
#include <chrono>
#include <cstdint>

#include "console/failure.h"
#include "platform/native.h"
#include "programme/loader.h"
#include "protocol/commands.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

using nlohmann::ordered_json;

std::string TwoDigits(unsigned number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

// "2026-11-23T13:40:05Z"
std::string TimeNow() {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(now - day);
    return std::to_string(static_cast<int>(date.year())) + "-" +
           TwoDigits(static_cast<unsigned>(date.month())) + "-" +
           TwoDigits(static_cast<unsigned>(date.day())) + "T" +
           TwoDigits(static_cast<unsigned>(time.hours().count())) + ":" +
           TwoDigits(static_cast<unsigned>(time.minutes().count())) + ":" +
           TwoDigits(static_cast<unsigned>(time.seconds().count())) + "Z";
}

ordered_json TransmitterFields(const ChosenHidHost& host) {
    const auto& opened = host.LatestOpened();
    if (!opened) return nullptr;
    return {{"path", opened->path},
            {"vendorId", opened->identity.vendorId},
            {"productId", opened->identity.productId}};
}

// The columns without their code lists: the digest stands for those.
ordered_json ColumnsOf(const Answer& answer) {
    ordered_json columns = ordered_json::array();
    for (std::size_t c = 0; c < kColumns; ++c) {
        const ordered_json& from = answer.fields.at("columns").at(c);
        ordered_json& column = columns.emplace_back();
        column = {
            {"column", kSections.at(c).name}, {"label", from.at("label")}, {"outcome", from.at("outcome")}};
        if (from.contains("verification")) column["verification"] = from.at("verification");
    }
    return columns;
}

}  // namespace

std::string Sha256(std::string_view bytes) {
    constexpr std::size_t kLength = 32;
    constexpr std::string_view kDigits = "0123456789abcdef";
    gcry_check_version(nullptr);  // initialises the library
    std::array<std::uint8_t, kLength> digest{};
    gcry_md_hash_buffer(GCRY_MD_SHA256, digest.data(), bytes.data(), bytes.size());
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

RunLog::RunLog(const Options& options, platform::Files& files) : options_(options) {
    if (!options_.log) return;
    try {
        digest_ = Sha256(files.ReadAll(options_.Argument(0), kLargestProgramme));
    } catch (const platform::FileError& error) {
        throw Failure(kMissingInput, About(options_.Argument(0), error));
    }
    Append("");
}

void RunLog::Add(const Answer& answer, const ChosenHidHost& host) {
    if (!options_.log) return;
    ordered_json line = {{"time", TimeNow()},
                         {"vento", VENTO_VERSION},
                         {"operation", options_.command->name},
                         {"file", options_.Argument(0)},
                         {"sha256", digest_},
                         {"transmitter", TransmitterFields(host)},
                         {"status", answer.status}};
    for (const char* key : {"result", "complete", "version", "seconds"})
        line[key] = answer.fields.at(key);
    line["columns"] = ColumnsOf(answer);
    line["diagnostic"] = answer.diagnostic.empty() ? ordered_json(nullptr) : ordered_json(answer.diagnostic);
    Append(line.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

void RunLog::Append(std::string_view text) const {
    try {
        platform::AppendNatively(PathFromUtf8(*options_.log), text);
    } catch (const platform::FileError& error) {
        throw Failure(kFailedOutput, Fill({"Il registro {0} non può essere scritto: {1}.",
                                           "The log {0} can't be written: {1}."},
                                          {*options_.log, error.Reason()}));
    }
}

}  // namespace vento::console
