#include "console/recorded_trace.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>

#include "console/failure.h"
#include "storage/json.h"

namespace vento::console {
namespace {

using nlohmann::json;
using storage::ContentError;
using storage::JsonNode;

enum class Event : std::uint8_t { search, write, read, close };
constexpr std::array<std::string_view, 4> kEvents{"search", "write", "read", "close"};

std::uint8_t HexDigit(char digit, const JsonNode& node) {
    if (digit >= '0' && digit <= '9') return static_cast<std::uint8_t>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<std::uint8_t>(digit - 'a' + 10);
    node.Refuse(Phrase{"le 65 coppie di cifre esadecimali di un report",
                       "a report as 65 pairs of hexadecimal digits"});
}

platform::Report ReportOf(const JsonNode& node) {
    platform::Report report{};
    const std::string& digits = node.Text();
    for (std::size_t i = 0; i < report.size(); ++i) {
        const bool lacks = digits.size() != 2 * report.size();
        report.at(i) = static_cast<std::uint8_t>(HexDigit(lacks ? 'x' : digits[2 * i], node) * 16 +
                                                 HexDigit(lacks ? 'x' : digits[2 * i + 1], node));
    }
    return report;
}

class Reader {
  public:
    RecordedTrace Read(std::string_view text) {
        while (!text.empty()) {
            const auto end = text.find('\n');
            const bool isLast = end == std::string_view::npos;
            std::string_view line = text.substr(0, end);
            if (line.ends_with('\r')) line.remove_suffix(1);
            text.remove_prefix(isLast ? text.size() : end + 1);
            ++line_;
            try {
                const json document = storage::ParseJson(line);
                Take(JsonNode(document));
            } catch (const ContentError& error) {
                Forgive(error, isLast);
                continue;
            }
            ++trace_.lines;
        }
        if (trace_.lines == 0 && firstError_) throw ContentError(*firstError_);
        if (trace_.lines == 0)
            throw ContentError(Phrase{"non contiene alcun passo", "there is no step in it"});
        return std::move(trace_);
    }

  private:
    // The first line and the last may be parts of one.
    void Forgive(const ContentError& error, bool isLast) {
        const Sentence reason =
            Fill({"riga {0}: {1}", "line {0}: {1}"}, {std::to_string(line_), error.Reason()});
        if (line_ == 1 && !isLast) {
            firstError_ = reason;
        } else if (isLast && trace_.lines > 0) {
            trace_.cutOff = true;
        } else {
            throw ContentError(firstError_ && trace_.lines == 0 ? *firstError_ : reason);
        }
    }

    void Take(const JsonNode& step) {
        constexpr std::uint64_t kMostCycles = std::uint64_t{1} << 53U;
        const std::uint64_t number = step.At("cycle").Number(0, kMostCycles);
        const auto event = static_cast<Event>(step.At("event").Choice(kEvents));
        if (event == Event::search) {
            trace_.cycles.push_back(
                {.number = number, .found = {}, .beginsHere = true, .closed = false, .reports = {}});
            if (step.At("found").Boolean()) {
                trace_.cycles.back().found = {Id(step.At("vendorId")), Id(step.At("productId"))};
            } else {
                trace_.cycles.back().closed = true;
            }
            return;
        }
        if (trace_.cycles.empty()) {
            trace_.cycles.push_back(
                {.number = number, .found = {}, .beginsHere = false, .closed = false, .reports = {}});
        }
        RecordedCycle& cycle = trace_.cycles.back();
        if (cycle.number != number || cycle.closed) {
            step.At("cycle").Refuse(
                Phrase{"il ciclo della ricerca che precede", "the cycle of the search above"});
        }
        if (event == Event::close) {
            cycle.closed = true;
        } else {
            cycle.reports.push_back(Transfer(step, event == Event::write));
        }
    }

    static std::uint16_t Id(const JsonNode& node) {
        return static_cast<std::uint16_t>(node.Number(0, 0xFFFF));
    }

    static RecordedReport Transfer(const JsonNode& step, bool outgoing) {
        constexpr std::uint64_t kMostError = 0x7FFFFFFF;
        RecordedReport transfer{.outgoing = outgoing, .ok = step.At("ok").Boolean(), .report = {}};
        if (outgoing || transfer.ok) transfer.report = ReportOf(step.At("report"));
        if (transfer.ok) return transfer;
        if (const JsonNode error = step.At("error"); error.IsThere())
            transfer.error = static_cast<int>(error.Number(0, kMostError));
        if (const JsonNode bytes = step.At("bytes"); bytes.IsThere())
            transfer.bytes = bytes.Number(0, transfer.report.size());
        return transfer;
    }

    RecordedTrace trace_;
    std::size_t line_ = 0;
    std::optional<Sentence> firstError_;
};

}  // namespace

bool LooksLikeTrace(std::string_view text) {
    const std::string_view first = text.substr(0, text.find('\n'));
    return first.starts_with('{') && first.find(R"("event")") != std::string_view::npos &&
           first.find(R"("cycle")") != std::string_view::npos &&
           first.find(R"("faults")") == std::string_view::npos;
}

RecordedTrace ParseTrace(std::string_view text) {
    return Reader().Read(text);
}

RecordedTrace TraceOf(std::string_view text, const std::string& name) {
    try {
        return ParseTrace(text);
    } catch (const ContentError& error) {
        throw Failure(kUnusableInput, About(name, error));
    }
}

}  // namespace vento::console
