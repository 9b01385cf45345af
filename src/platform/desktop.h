#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vento::platform {

/// A size in twips (1/1440 inch).
struct TwipSize {
    int width = 0;
    int height = 0;
};

/// What the panel asks of the desktop that it stands on. A console stands in for one just as well.
class Desktop {
  public:
    Desktop() = default;
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    Desktop(Desktop&&) = delete;
    Desktop& operator=(Desktop&&) = delete;
    virtual ~Desktop() = default;

    /// Lets the event loop handle what is pending and comes back. Handlers of the panel may run inside.
    virtual void Yield() = 0;

    /// Shows `text` in a box with one OK button and comes back when it is closed. `detail`, which may be
    /// empty, stands below in smaller type.
    virtual void ShowMessage(std::string_view text, std::string_view detail) = 0;

    /// Lets the operator choose an existing file; nothing if the operator cancels. `filter` is a run of
    /// "description|pattern|" pairs. The dialog comes up with the file that was chosen last.
    [[nodiscard]] virtual std::optional<std::string> ChooseFile(std::string_view title,
                                                                std::string_view filter) = 0;

    /// The name of the program's active form: "FormWeb" for as long as that form exists.
    [[nodiscard]] virtual std::string ActiveFormName() const = 0;

    [[nodiscard]] virtual TwipSize ScreenSize() const = 0;

    /// The three-letter abbreviation of the desktop's language, "ITA" for Italian; nothing if it can't be
    /// told.
    [[nodiscard]] virtual std::optional<std::string> LanguageAbbreviation() = 0;

    /// The program is over: no event of the panel is to run any more. Comes back all the same.
    virtual void EndProgram() = 0;
};

}  // namespace vento::platform
