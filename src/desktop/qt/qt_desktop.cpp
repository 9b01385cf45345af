#include "desktop/qt/qt_desktop.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QThread>
#include <QTreeView>

#include "desktop/layout.h"
#include "desktop/qt/look.h"
#include "platform/native.h"

namespace vento::desktop::qt {
namespace {

constexpr Font kTextFont{"Calibri", "Carlito", 240, true};
constexpr Font kDetailFont{"Calibri", "Carlito", 210, false};
constexpr int kDetailWidth = 5400;  // twips, below which the detail is not squeezed
constexpr int kIconSize = 48;       // pixels
constexpr qint64 kSilence = 5;      // milliseconds without a question, which end a turn
constexpr unsigned long kListenMicroseconds = 300;

// The toolkit gives the informative text no smaller type by itself, and takes what looks like markup in it
// for markup, which a path may well contain.
void StyleLabel(QMessageBox& box, const QString& name, const Look& look, const Font& font, int leastWidth) {
    auto* const label = box.findChild<QLabel*>(name);
    if (label == nullptr) return;
    label->setFont(look.FontOf(font));
    label->setMinimumWidth(PixelsFromTwips(leastWidth, look.DotsPerInch()));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
}

}  // namespace

// What a screen reader wants to know takes it dozens of questions, each after the answer to the one before.
// With one of them to a turn it would fall silent for seconds, so a turn lasts while they come, but not
// longer than the work since the last one, which so keeps half its speed.
void QtDesktop::Yield() {
    if (beforeTurn_) beforeTurn_();
    const qint64 longest = sinceTurn_.isValid() ? sinceTurn_.elapsed() : 0;
    QElapsedTimer turn;
    QElapsedTimer silence;
    turn.start();
    for (;;) {
        const std::uint64_t known = questions_;
        QCoreApplication::processEvents();
        if (questions_ != known) silence.start();
        const bool moreMayCome =
            silence.isValid() && silence.elapsed() < kSilence && turn.elapsed() < longest;
        if (!moreMayCome) break;
        QThread::usleep(kListenMicroseconds);
    }
    sinceTurn_.start();
}

void QtDesktop::ShowMessage(std::string_view text, std::string_view detail) {
    QMessageBox box(QMessageBox::NoIcon, QCoreApplication::applicationName(), ShownLines(text),
                    QMessageBox::Ok, window_);
    box.setIconPixmap(Drawing("warning.svg", kIconSize, box.devicePixelRatio()));
    box.setInformativeText(ShownLines(detail));
    StyleLabel(box, "qt_msgbox_label", look_, kTextFont, 0);
    StyleLabel(box, "qt_msgbox_informativelabel", look_, kDetailFont, kDetailWidth);
    box.button(QMessageBox::Ok)->setIcon({});
    const QShortcut copy(QKeySequence(QKeySequence::Copy), &box);
    QObject::connect(&copy, &QShortcut::activated, &box, [&box] {
        QGuiApplication::clipboard()->setText((box.text() + "\n\n" + box.informativeText()).trimmed());
    });
    if (beforeTurn_) beforeTurn_();
    box.exec();
}

std::optional<std::string> QtDesktop::ChooseFile(std::string_view title, std::string_view filter) {
    QFileDialog dialog(window_, Text(title));
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setNameFilters(NameFilters(filter));
    dialog.resize(dialog.sizeHint().boundedTo(dialog.screen()->availableSize() - kWindowFrame));
    // By itself the toolkit looks at the files alone, which may be narrower than what stands above them.
    if (auto* const files = dialog.findChild<QTreeView*>("treeView")) {
        for (int column = 1; column < files->header()->count(); ++column)
            files->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    }
    if (!latestFile_.isEmpty()) dialog.selectFile(latestFile_);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    latestFile_ = dialog.selectedFiles().front();
    return QFile::encodeName(latestFile_).toStdString();
}

platform::TwipSize QtDesktop::ScreenSize() const {
    const QSize size = QGuiApplication::primaryScreen()->size();
    return {TwipsFromPixels(size.width(), kScreenDotsPerInch),
            TwipsFromPixels(size.height(), kScreenDotsPerInch)};
}

std::optional<std::string> QtDesktop::LanguageAbbreviation() {
    return platform::NativeLanguageAbbreviation();
}

// A box or dialog that is still open comes to its end with its window, as if it had been cancelled.
std::unique_ptr<platform::SleepInhibitor> QtDesktop::InhibitSleep(std::string_view reason) {
    return platform::InhibitNativeSleep(reason);
}

void QtDesktop::EndProgram() {
    for (QWidget* const each : QApplication::topLevelWidgets())
        each->hide();
    QCoreApplication::exit();
}

QStringList NameFilters(std::string_view filter) {
    QStringList filters;
    const QStringList parts = Text(filter).split('|', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        filters.append(parts[i] + " (" + QString(parts[i + 1]).replace(';', ' ') + ")");
    }
    return filters;
}

}  // namespace vento::desktop::qt
