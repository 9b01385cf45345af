#include "desktop/qt/form_window.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QUrl>
#include <QWindow>
#include <algorithm>
#include <optional>

#include "desktop/guidance.h"
#include "desktop/layout.h"

namespace vento::desktop::qt {
namespace {

// A look takes a fraction of a millisecond and opens nothing. It also sees what no event tells of: rights,
// and other programs that begin to use the transmitter.
constexpr int kLookMilliseconds = 2000;

// The programme file that is being dragged: a single file of this machine with the right extension.
std::optional<QString> ProgrammeFileIn(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    if (urls.size() != 1 || !urls.front().isLocalFile()) return std::nullopt;
    const QString path = urls.front().toLocalFile();
    if (QFileInfo(path).suffix().compare("qlb", Qt::CaseInsensitive) != 0) return std::nullopt;
    return path;
}

}  // namespace

FormWindow::FormWindow(FormWeb& form, platform::Desktop& desktop, Look& look, const QString& title)
    : form_(form),
      desktop_(desktop),
      look_(look),
      image1_(ControlId::Image1, look, form.PanelLanguage(), this),
      listView1_{ItemsView(form.ListView1[0], ControlId::ListView1_0, look, form.PanelLanguage(), this),
                 ItemsView(form.ListView1[1], ControlId::ListView1_1, look, form.PanelLanguage(), this),
                 ItemsView(form.ListView1[2], ControlId::ListView1_2, look, form.PanelLanguage(), this)},
      command2_(form.Command2, ControlId::Command2, look, form.PanelLanguage(),
                Pressing(&FormWeb::Command2_Click), this),
      command3_(form.Command3, ControlId::Command3, look, form.PanelLanguage(),
                Pressing(&FormWeb::Command3_Click), this),
      command4_(form.Command4, ControlId::Command4, look, form.PanelLanguage(),
                Pressing(&FormWeb::Command4_Click), this),
      command6_(
          form.Command6(0), ControlId::Command6_0, look, form.PanelLanguage(),
          [this] {
              form_.Command6_Click(0);
              Refresh();
          },
          this),
      label1_(form.Label1, ControlId::Label1, look, form.PanelLanguage(), this),
      progressBar1_(form.ProgressBar1, ControlId::ProgressBar1, look, form.PanelLanguage(), this),
      hint_(
          look, form.PanelLanguage(), [this] { DoHint(); }, this),
      escape_(QKeySequence(Qt::Key_Escape), this),
      copy_(QKeySequence(QKeySequence::Copy), this),
      details_(QKeySequence(Qt::Key_F1), this) {
    connect(&looking_, &QTimer::timeout, this, [this] { LookForTransmitter(); });
    looking_.start(kLookMilliseconds);
    loading_.setSingleShot(true);
    connect(&loading_, &QTimer::timeout, this, [this] {
        form_.DropFile(dropped_);
        Refresh();
    });
    connect(&escape_, &QShortcut::activated, this, Pressing(&FormWeb::Cancel));
    connect(&copy_, &QShortcut::activated, this, [this] { CopyStatus(); });
    connect(&details_, &QShortcut::activated, this, [this] { ShowDetails(); });
    setWindowTitle(title);
    setAcceptDrops(true);
    const QScreen& screen = *QGuiApplication::primaryScreen();
    look_.FitInto(screen.availableSize());
    ApplyLook();
    const Rectangle place{form.Place.left, form.Place.top, form.Place.width, form.Place.height};
    const Rectangle pixels = PixelsFromTwips(place, kScreenDotsPerInch);
    const QSize full(pixels.width, pixels.height);
    const QSize less = (full - size()) / 2;  // on a screen that is too small for the whole form
    move(screen.geometry().topLeft() + QPoint(pixels.left + less.width(), pixels.top + less.height()));
    KeepOnScreen();
    SetTabOrder();
    LookForTransmitter();
}

std::function<void()> FormWindow::Pressing(void (FormWeb::*handler)()) {
    return [this, handler] {
        (form_.*handler)();
        Refresh();
    };
}

View* FormWindow::ViewOf(ControlId id) {
    const std::array<View*, 11> views{&image1_,   &listView1_[0], &listView1_[1], &listView1_[2],
                                      &command2_, &command3_,     &command4_,     &command6_,
                                      &label1_,   &progressBar1_, &hint_};
    const auto* const found = std::ranges::find(views, id, &View::Id);
    return found == views.end() ? nullptr : *found;  // the rule is painted by the window itself
}

void FormWindow::SetTabOrder() {
    QWidget* previous = nullptr;
    for (const ControlLayout& each : ControlLayouts()) {
        if (!each.tabIndex) continue;
        QWidget* const view = &ViewOf(each.id)->Widget();
        if ((view->focusPolicy() & Qt::TabFocus) == 0) continue;
        if (previous != nullptr) setTabOrder(previous, view);
        previous = view;
    }
}

void FormWindow::ApplyLook() {
    setFixedSize(look_.PlaceOf(kFormArea).size());
    for (const ControlLayout& each : ControlLayouts()) {
        if (View* const view = ViewOf(each.id)) view->Apply();
    }
    update();
}

// On a screen that is smaller than the form, the form shrinks.
void FormWindow::FitScreen() {
    if (look_.FitInto(screen()->availableSize())) ApplyLook();
    KeepOnScreen();
}

void FormWindow::KeepOnScreen() {
    const QRect area = screen()->availableGeometry();
    const QRect frame = frameGeometry();
    const int left = std::max(area.left(), std::min(frame.left(), area.right() + 1 - frame.width()));
    const int top = std::max(area.top(), std::min(frame.top(), area.bottom() + 1 - frame.height()));
    if (QPoint(left, top) != frame.topLeft()) move(left, top);
}

void FormWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (screenIsWatched_) return;
    screenIsWatched_ = true;
    const auto watch = [this](QScreen* screen) {
        connect(screen, &QScreen::availableGeometryChanged, this, [this] { FitScreen(); });
        FitScreen();
    };
    connect(windowHandle(), &QWindow::screenChanged, this, watch);
    watch(screen());
}

void FormWindow::Refresh() {
    if (form_.Ended()) return;
    if (form_.Operating() != operating_) ShowOperation(form_.Operating());
    command2_.SetDimmed(IsDimmed(ControlId::Command2, form_));
    command4_.SetDimmed(IsDimmed(ControlId::Command4, form_));
    hint_.SetHint(HintText(HelpFor(form_), form_.PanelLanguage()));
    for (const ControlLayout& each : ControlLayouts()) {
        if (View* const view = ViewOf(each.id)) view->SetGuidance(GuidanceFor(each.id, form_, transmitter_));
    }
    if (form_.ProgressBar1.Visible())
        launcher_.ShowProgress(form_.ProgressBar1.Value() / form_.ProgressBar1.Maximum());
}

// An operation is not to be disturbed, and has the transmitter anyway.
void FormWindow::LookForTransmitter() {
    if (form_.Operating() || form_.Ended()) return;
    transmitter_ = form_.Transmitter();
    Refresh();
}

// At the end of an operation hands and eyes are at the remote.
void FormWindow::ShowOperation(bool operating) {
    operating_ = operating;
    if (operating) {
        setCursor(Qt::BusyCursor);
        return;
    }
    unsetCursor();
    launcher_.HideProgress(!isActiveWindow());
    if (isActiveWindow()) return;
    QApplication::alert(this);
    QApplication::beep();
}

// What the key does that the hint names.
void FormWindow::DoHint() {
    if (HelpFor(form_) == Help::cancel) {
        form_.Cancel();
        Refresh();
    } else {
        ShowDetails();
    }
}

// A screen reader reaches the button behind a box, too.
void FormWindow::ShowDetails() {
    const std::string details = DetailsOf(form_);
    if (form_.Operating() || details.empty() || QApplication::activeModalWidget() != nullptr) return;
    desktop_.ShowMessage(form_.Label1.Caption(), details);
}

void FormWindow::CopyStatus() {
    const QString text = label1_.TextToCopy();
    if (!text.isEmpty()) QGuiApplication::clipboard()->setText(text);
}

void FormWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), look_.ColourOf(kFormBackground));
    const ControlLayout& rule = LayoutOf(ControlId::Line1);
    painter.fillRect(look_.PlaceOf(rule.place), look_.ColourOf(rule.background));
}

void FormWindow::closeEvent(QCloseEvent* event) {
    form_.Form_Unload();
    event->accept();
}

// While an operation runs the pointer says that nothing can be dropped here.
void FormWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (ProgrammeFileIn(*event->mimeData())) event->acceptProposedAction();
}

void FormWindow::dragMoveEvent(QDragMoveEvent* event) {
    event->setAccepted(!form_.Operating());
}

// The file is loaded a moment later: a message box must not keep the program that it was dragged from
// waiting.
void FormWindow::dropEvent(QDropEvent* event) {
    const auto path = ProgrammeFileIn(*event->mimeData());
    if (!path || form_.Operating()) return;
    event->acceptProposedAction();
    dropped_ = QFile::encodeName(*path).toStdString();
    loading_.start();
}

}  // namespace vento::desktop::qt
