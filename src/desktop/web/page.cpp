#include "desktop/web/page.h"

#include <array>
#include <nlohmann/json.hpp>
#include <vector>

#include "desktop/guidance.h"
#include "desktop/shown_text.h"
#include "desktop/web/script.h"
#include "platform/web/web.h"
#include "protocol/transmitter_kinds.h"

namespace vento::desktop::web {
namespace {

using nlohmann::json;
using platform::Presence;

const Button* ButtonOf(ControlId id, FormWeb& form) {
    switch (id) {
        case ControlId::Command2:
            return &form.Command2;
        case ControlId::Command3:
            return &form.Command3;
        case ControlId::Command4:
            return &form.Command4;
        case ControlId::Command6_0:
            return &form.Command6(0);
        default:
            return nullptr;
    }
}

const ListView* ListOf(ControlId id, const FormWeb& form) {
    if (id < ControlId::ListView1_0 || id > ControlId::ListView1_2) return nullptr;
    return &form.ListView1.at(static_cast<std::size_t>(id) -
                              static_cast<std::size_t>(ControlId::ListView1_0));
}

std::string PageGuidanceFor(ControlId id, FormWeb& form, Presence transmitter) {
    const std::string& file = form.Label2.Caption();
    if (id == ControlId::Command3 && !file.empty() && !form.ProgressBar1.Visible())
        return CloseGuidance(file, form.PanelLanguage());
    return GuidanceFor(id, form, transmitter);
}

json ViewOf(ControlId id, FormWeb& form, Presence transmitter) {
    json view{{"id", ElementOf(id)}, {"guidance", PageGuidanceFor(id, form, transmitter)}};
    if (const Button* const button = ButtonOf(id, form)) {
        view["text"] = ShownText(button->Caption());
        view["visible"] = button->Visible();
        view["enabled"] = button->Enabled();
        view["dimmed"] = IsDimmed(id, form);
    } else if (const ListView* const list = ListOf(id, form)) {
        view["items"] = json::array();
        for (const std::string& item : list->Items())
            view["items"].push_back(ShownText(item));
    } else if (id == ControlId::Label1) {
        view["text"] = ShownText(form.Label1.Caption());
    } else if (id == ControlId::hint) {
        view["text"] = HintText(HelpFor(form), form.PanelLanguage());
    } else if (id == ControlId::ProgressBar1) {
        view["visible"] = form.ProgressBar1.Visible();
        view["value"] = form.ProgressBar1.Value();
        view["largest"] = form.ProgressBar1.Maximum();
    }
    return view;
}

}  // namespace

Page::Page(std::string_view simulate, const std::string& file)
    : session_(simulate),
      desktop_([this] { RefreshIfChanged(); }, [this] { End(); }),
      machine_(session_.MachineWith(desktop_)),
      trace_(
          std::in_place, [this](std::string_view line) { traceText_ += line; }, machine_.clock),
      hid_(machine_.hid, &*trace_, {}),
      form_(Machine{hid_, desktop_, machine_.files, machine_.clock, machine_.backEnd}) {
    form_.Form_Load(file, CommandLineKind::path);
    ObserveControls();
    script::SendTexts(TextsJson(PageLanguage()));
    Look();
}

void Page::ObserveControls() {
    const auto note = [this] { changed_ = true; };
    for (ListView& list : form_.ListView1)
        list.Observe(note);
    for (Button* const button : {&form_.Command2, &form_.Command3, &form_.Command4, &form_.Command6(0),
                                 &form_.Command6(FormWeb::kCancelHolder)})
        button->Observe(note);
    form_.Label1.Observe(note);
    form_.ProgressBar1.Observe(note);
}

void Page::Press(ControlId id) {
    const bool begins = id == ControlId::Command2 || id == ControlId::Command6_0;
    if (begins && !HasTransmitter()) return;
    if (begins) BeginTrace();
    switch (id) {
        case ControlId::Command2:
            form_.Command2_Click();
            break;
        case ControlId::Command3:
            form_.Command3_Click();
            break;
        case ControlId::Command4:
            form_.Command4_Click();
            break;
        case ControlId::Command6_0:
            form_.Command6_Click(0);
            break;
        default:
            break;
    }
    Look();
}

void Page::Connect() {
    std::vector<std::uint16_t> vendors;
    vendors.reserve(kTransmitterKinds.size());
    for (const TransmitterKind& kind : kTransmitterKinds)
        vendors.push_back(kind.vendorId);
    const bool chosen = platform::RequestDevices(vendors);
    Look();
    if (chosen || form_.Ended()) return;
    script::Tell(BoxJson(NothingChosenText(PageLanguage()), NothingChosenDetail(PageLanguage())));
}

// What is there and can't be used is left to the operation, which says why.
bool Page::HasTransmitter() {
    if (machine_.backEnd == platform::HidBackEnd::simulation || form_.Operating()) return true;
    if (form_.Transmitter() == Presence::absent) Connect();
    return !form_.Ended() && form_.Transmitter() != Presence::absent;
}

void Page::Open(const std::string& path) {
    form_.DropFile(path);
    Look();
}

void Page::Cancel() {
    form_.Cancel();
    Refresh();
}

void Page::ShowDetails() {
    const std::string details = DetailsOf(form_);
    if (form_.Operating() || details.empty()) return;
    script::Tell(BoxJson(form_.Label1.Caption(), details));
}

void Page::DoHint() {
    if (HelpFor(form_) == Help::cancel) {
        Cancel();
    } else {
        ShowDetails();
    }
}

void Page::Refuse(std::string_view name) const {
    script::Tell(BoxJson(ForeignFileText(PageLanguage()), name));
}

void Page::Look() {
    if (form_.Ended()) return;
    if (!form_.Operating()) {
        transmitter_ = form_.Transmitter();
        hadTransmitter_ = hadTransmitter_ || transmitter_ == Presence::ready;
    }
    Refresh();
}

void Page::BeginTrace() {
    if (form_.Operating()) return;
    traceText_.clear();
    trace_.emplace([this](std::string_view line) { traceText_ += line; }, machine_.clock);
}

void Page::RefreshIfChanged() {
    if (changed_ || column_ != form_.ColumnInWork()) Refresh();
}

void Page::Refresh() {
    if (form_.Ended()) return;
    changed_ = false;
    column_ = form_.ColumnInWork();
    std::string view = ViewJson();
    if (view == shown_) return;
    shown_ = std::move(view);
    script::Show(shown_);
}

void Page::End() {
    const std::optional<Notice> notice = session_.Finish(PageLanguage());
    script::End(EndJson(File(), PageLanguage()));
    if (notice) script::Tell(BoxJson(notice->text, notice->detail));
}

LinkState Page::StateOfLink() const {
    if (machine_.backEnd == platform::HidBackEnd::simulation)
        return script::CanReachTransmitters() ? LinkState::simulated : LinkState::unreachable;
    if (form_.Operating()) return LinkState::ready;
    switch (transmitter_) {
        case Presence::forbidden:
            return LinkState::forbidden;
        case Presence::inUse:
            return LinkState::inUse;
        case Presence::ready:
            return LinkState::ready;
        case Presence::absent:
        case Presence::unknown:
            break;
    }
    return hadTransmitter_ ? LinkState::unplugged : LinkState::notGranted;
}

std::string Page::ViewJson() {
    const Language language = PageLanguage();
    const LinkState state = StateOfLink();
    json controls = json::array();
    for (const ControlLayout& each : ControlLayouts())
        controls.push_back(ViewOf(each.id, form_, transmitter_));
    json steps = json::array();
    if (state == LinkState::forbidden && script::OnLinux()) {
        for (const Step& step : PermissionSteps(language))
            steps.push_back({{"text", step.text}, {"commands", step.commands}});
    }
    const auto& outcome = form_.LatestOutcome();
    const json view{
        {"title", session_.Title(language)},
        {"controls", std::move(controls)},
        {"operating", form_.Operating()},
        {"link", {{"text", LinkText(state, language)}, {"steps", std::move(steps)}}},
        {"simulated", machine_.backEnd == platform::HidBackEnd::simulation},
        {"connectable", state != LinkState::simulated && state != LinkState::unreachable},
        {"traced", !traceText_.empty() && !form_.Operating()},
        {"file", ShownText(File())},
        {"code", outcome ? json(static_cast<int>(outcome->code)) : json()},
        {"details", DetailsOf(form_)},
    };
    return view.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace vento::desktop::web
