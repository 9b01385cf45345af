#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "desktop/layout.h"
#include "desktop/session.h"
#include "desktop/web/page_texts.h"
#include "desktop/web/web_desktop.h"
#include "panel/form_web.h"
#include "trace/traced_hid_host.h"

namespace vento::desktop::web {

/// FormWeb in the browser: tells the script what to show, and takes what the operator does to the form's
/// handlers. What may wait says so; while one of these waits, the others do nothing.
class Page {
  public:
    /// `simulate` as a Session takes it. `file` is loaded if it is not empty. Throws as a Session does.
    Page(std::string_view simulate, const std::string& file);
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;
    Page(Page&&) = delete;
    Page& operator=(Page&&) = delete;
    ~Page() = default;

    /// A button was pressed, which may wait. To begin an operation, where the page has no transmitter yet,
    /// the operator is asked for one.
    void Press(ControlId id);
    /// Has the operator choose a transmitter. May wait.
    void Connect();
    /// A programme file came by another way than the dialog. May wait.
    void Open(const std::string& path);

    void Close() { form_.Command3_Click(); }
    void Cancel();
    void ShowDetails();
    /// What the key does that the hint names.
    void DoHint();
    /// A device has come or gone.
    void Look();
    /// Says that a file is of no use here.
    void Refuse(std::string_view name) const;

    [[nodiscard]] bool Ended() const { return form_.Ended(); }
    /// The programme file that was named last; empty for none.
    [[nodiscard]] const std::string& File() const { return form_.Label2.Caption(); }
    [[nodiscard]] Language PageLanguage() const { return form_.PanelLanguage(); }
    /// Every step on the link in the latest operation.
    [[nodiscard]] const std::string& TraceText() const { return traceText_; }

  private:
    void ObserveControls();
    [[nodiscard]] bool HasTransmitter();
    void BeginTrace();
    void Refresh();
    void RefreshIfChanged();
    void End();
    [[nodiscard]] LinkState StateOfLink() const;
    [[nodiscard]] std::string ViewJson();

    Session session_;
    WebDesktop desktop_;
    Machine machine_;
    std::string traceText_;
    std::optional<Trace> trace_;
    TracedHidHost hid_;
    FormWeb form_;
    platform::Presence transmitter_ = platform::Presence::unknown;
    bool hadTransmitter_ = false;
    bool changed_ = false;  ///< since the latest view
    std::optional<std::size_t> column_;
    std::string shown_;
};

}  // namespace vento::desktop::web
