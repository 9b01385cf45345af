#include "desktop/qt/form_window.h"

#include <QCloseEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QUrl>
#include <optional>

#include "desktop/layout.h"
#include "desktop/qt/look.h"

namespace vento::desktop::qt {
namespace {

// The programme file that is being dragged: a single file of this machine with the right extension.
std::optional<QString> ProgrammeFileIn(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    if (urls.size() != 1 || !urls.front().isLocalFile()) return std::nullopt;
    const QString path = urls.front().toLocalFile();
    if (QFileInfo(path).suffix().compare("qlb", Qt::CaseInsensitive) != 0) return std::nullopt;
    return path;
}

}  // namespace

FormWindow::FormWindow(FormWeb& form, const QString& title)
    : form_(form),
      image1_(ControlId::Image1, form.PanelLanguage(), this),
      listView1_{ItemsView(form.ListView1[0], ControlId::ListView1_0, form.PanelLanguage(), this),
                 ItemsView(form.ListView1[1], ControlId::ListView1_1, form.PanelLanguage(), this),
                 ItemsView(form.ListView1[2], ControlId::ListView1_2, form.PanelLanguage(), this)},
      command2_(
          form.Command2, ControlId::Command2, form.PanelLanguage(), [this] { form_.Command2_Click(); }, this),
      command3_(
          form.Command3, ControlId::Command3, form.PanelLanguage(), [this] { form_.Command3_Click(); }, this),
      command4_(
          form.Command4, ControlId::Command4, form.PanelLanguage(), [this] { form_.Command4_Click(); }, this),
      command6_(
          form.Command6(0), ControlId::Command6_0, form.PanelLanguage(), [this] { form_.Command6_Click(0); },
          this),
      label1_(form.Label1, ControlId::Label1, form.PanelLanguage(), this),
      progressBar1_(form.ProgressBar1, ControlId::ProgressBar1, form.PanelLanguage(), this),
      escape_(QKeySequence(Qt::Key_Escape), this) {
    loading_.setSingleShot(true);
    connect(&loading_, &QTimer::timeout, this, [this] { form_.DropFile(dropped_); });
    connect(&escape_, &QShortcut::activated, this, [this] { form_.Cancel(); });
    setWindowTitle(title);
    setAcceptDrops(true);
    setFixedSize(PlaceOf(kFormArea).size());
    const Rectangle place{form.Place.left, form.Place.top, form.Place.width, form.Place.height};
    move(PlaceOf(place).topLeft() + QGuiApplication::primaryScreen()->geometry().topLeft());
    SetTabOrder();
}

QWidget* FormWindow::ViewOf(ControlId id) {
    switch (id) {
        case ControlId::Image1:
            return &image1_;
        case ControlId::Line1:
            return nullptr;  // painted by the window itself
        case ControlId::Command2:
            return &command2_;
        case ControlId::Command3:
            return &command3_;
        case ControlId::Command4:
            return &command4_;
        case ControlId::Command6_0:
            return &command6_;
        case ControlId::ListView1_0:
            return &listView1_[0];
        case ControlId::ListView1_1:
            return &listView1_[1];
        case ControlId::ListView1_2:
            return &listView1_[2];
        case ControlId::Label1:
            return &label1_;
        case ControlId::ProgressBar1:
            return &progressBar1_;
    }
    return nullptr;
}

void FormWindow::SetTabOrder() {
    QWidget* previous = nullptr;
    for (const ControlLayout& each : ControlLayouts()) {
        if (!each.tabIndex) continue;
        QWidget* const view = ViewOf(each.id);
        if (previous != nullptr) setTabOrder(previous, view);
        previous = view;
    }
}

void FormWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), ColourOf(kFormBackground));
    const ControlLayout& rule = LayoutOf(ControlId::Line1);
    painter.fillRect(PlaceOf(rule.place), ColourOf(rule.background));
}

void FormWindow::closeEvent(QCloseEvent* event) {
    form_.Form_Unload();
    event->accept();
}

void FormWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (ProgrammeFileIn(*event->mimeData())) event->acceptProposedAction();
}

// The file is loaded a moment later: a message box must not keep the program that it was dragged from
// waiting.
void FormWindow::dropEvent(QDropEvent* event) {
    const auto path = ProgrammeFileIn(*event->mimeData());
    if (!path) return;
    event->acceptProposedAction();
    dropped_ = QFile::encodeName(*path).toStdString();
    loading_.start();
}

}  // namespace vento::desktop::qt
