#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/terminal.h"
#include "text/language.h"

namespace vento::console {

/// What an operation shows of itself while it runs.
struct Progress {
    std::string caption;             ///< the status line; may be empty
    std::string hint;                ///< what the operator can do, in a line below; may be empty
    std::optional<double> fraction;  ///< of the bar, 0 to 1; nothing where no bar is shown
};

/// Draws progress on standard error and draws it anew in place, on as many lines as it takes. For a terminal
/// that can redraw. It is gone from the screen when its owner is.
class ProgressLine {
  public:
    /// `terminal` has to outlive this.
    ProgressLine(const platform::Terminal& terminal, bool colour) : terminal_(terminal), colour_(colour) {}
    ~ProgressLine() { Clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ProgressLine(ProgressLine&&) = delete;
    ProgressLine& operator=(ProgressLine&&) = delete;

    /// Writes nothing if the picture would stay the same.
    void Show(const Progress& progress);

    void Clear();

  private:
    enum class Style : std::uint8_t { plain, faint, bar };
    struct Line {
        std::string text;
        Style style = Style::plain;

        friend bool operator==(const Line&, const Line&) = default;
    };

    [[nodiscard]] static std::vector<Line> LayOut(const Progress& progress, std::size_t width);
    [[nodiscard]] std::string Coloured(const Line& line) const;
    [[nodiscard]] std::string Erasure() const;

    const platform::Terminal& terminal_;
    bool colour_;
    std::vector<Line> shown_;
};

/// Puts results on standard output; true if all of them have left the program, else errno says why not.
[[nodiscard]] bool WriteResults(const std::string& text);

/// All that goes to standard error. What can't be written there is lost.
class Notices {
  public:
    /// `terminal` has to outlive this. `quiet` leaves errors alone.
    Notices(const platform::Terminal& terminal, Language language, bool quiet = false, bool verbose = false);

    /// An error, or what the operator can't do without: always said. `detail`, which may be empty, follows
    /// below.
    void Error(const Sentence& text, const Sentence& detail = {});

    /// A question, always said; the answer follows on the same line.
    void Ask(const Sentence& text);

    /// What is good to know.
    void Note(const Sentence& text);

    /// What support wants to know: said only where `verbose` was asked for.
    void Detail(const Sentence& text);

    /// How far it is: drawn in place on a terminal; elsewhere nothing but a new caption is said.
    void ShowProgress(const Progress& progress);

    void ClearProgress();

    /// Calls for attention, on a terminal.
    void RingBell() const;

  private:
    void Say(std::string_view prefix, std::string_view text);

    const platform::Terminal& terminal_;
    Language language_;
    bool quiet_;
    bool verbose_;
    bool redraws_;
    bool colour_;
    std::optional<ProgressLine> line_;  ///< nothing where nothing is drawn
    std::string latestCaption_;
};

}  // namespace vento::console
