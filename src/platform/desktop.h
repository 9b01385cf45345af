#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vento::platform {

/// A size in twips (1/1440 inch).
struct TwipSize {
    int width = 0;
    int height = 0;
};

/// Keeps the computer awake for as long as it lives.
class SleepInhibitor {
  public:
    SleepInhibitor() = default;
    SleepInhibitor(const SleepInhibitor&) = delete;
    SleepInhibitor& operator=(const SleepInhibitor&) = delete;
    SleepInhibitor(SleepInhibitor&&) = delete;
    SleepInhibitor& operator=(SleepInhibitor&&) = delete;
    virtual ~SleepInhibitor() = default;
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

    /// As long as the answer lives the computer does not fall asleep by itself, and whoever shuts it down is
    /// told `reason`, as far as the system lets a program ask for that. Null where it does not.
    [[nodiscard]] virtual std::unique_ptr<SleepInhibitor> InhibitSleep(std::string_view /*reason*/) {
        return nullptr;
    }

    /// The program is over: no event of the panel is to run any more. Comes back all the same.
    virtual void EndProgram() = 0;
};

}  // namespace vento::platform
