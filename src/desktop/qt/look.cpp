#include "desktop/qt/look.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QStyleFactory>
#include <QSvgRenderer>
#include <algorithm>
#include <array>
#include <utility>

#include "desktop/shown_text.h"

namespace vento::desktop::qt {
namespace {

constexpr int kLeastDotsPerInch = 48;
constexpr int kLeastFontSize = 6;
constexpr int kHoverDarkening = 106;  // percent of darkness
constexpr int kPressDarkening = 118;

// Borders and dimmed text have a contrast of 3 to 1 or more with white and with the grey of a button.
QPalette LightPalette() {
    QPalette palette(QColor(240, 240, 240), Qt::white);
    const QColor dimmed(0x6b, 0x70, 0x78);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, Qt::black);
        palette.setColor(QPalette::Disabled, role, dimmed);
    }
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::ToolTipBase, QColor(255, 255, 225));
    palette.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xb5));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, dimmed);
    palette.setColor(QPalette::Mid, QColor(0x7c, 0x82, 0x8a));  // borders
    return palette;
}

QPalette HighContrastPalette(const QColor& ground, const QColor& ink, const QColor& accent) {
    QPalette palette(ground, ground);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                            QPalette::BrightText, QPalette::PlaceholderText, QPalette::Mid}) {
        palette.setColor(role, ink);
    }
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::AlternateBase, QPalette::Button,
                            QPalette::ToolTipBase, QPalette::HighlightedText}) {
        palette.setColor(role, ground);
    }
    palette.setColor(QPalette::Highlight, accent);
    const QColor dimmed = ink == Qt::white ? QColor(0x3f, 0xf2, 0x3f) : QColor(0x60, 0, 0);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, dimmed);
    return palette;
}

/// Breaks a text at its blanks into lines that are no wider than `width`, where that is possible.
QStringList Wrapped(const QString& text, const QFontMetrics& metrics, int width) {
    QStringList lines;
    for (const QString& paragraph : text.split('\n')) {
        QString line;
        for (const QString& word : paragraph.split(' ')) {
            const QString longer = line.isEmpty() ? word : line + ' ' + word;
            if (line.isEmpty() || metrics.horizontalAdvance(longer) <= width) {
                line = longer;
            } else {
                lines.append(line);
                line = word;
            }
        }
        lines.append(line);
    }
    return lines;
}

QIcon ProgramIcon() {
    QIcon icon;
    for (const int size : std::array{16, 32, 48, 128})
        icon.addPixmap(Drawing("vento.svg", size, 1));
    return icon;
}

}  // namespace

Look::Look() : dotsPerInch_(kScreenDotsPerInch) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QApplication::setWindowIcon(ProgramIcon());
    SetContrast(Contrast::normal);
}

void Look::SetContrast(Contrast contrast) {
    contrast_ = contrast;
    switch (contrast) {
        case Contrast::normal:
            palette_ = LightPalette();
            break;
        case Contrast::highOnLight:
            palette_ = HighContrastPalette(Qt::white, Qt::black, QColor(0x37, 0, 0x6e));
            break;
        case Contrast::highOnDark:
            palette_ = HighContrastPalette(Qt::black, Qt::white, QColor(0x1a, 0xeb, 0xff));
            break;
    }
    QApplication::setPalette(palette_);
    qApp->setStyleSheet(DialogStyle());
}

bool Look::FitInto(const QSize& area) {
    const QSize room = area - kWindowFrame;
    const int before = dotsPerInch_;
    const auto fits = [&](int dotsPerInch) {
        const Rectangle form = PixelsFromTwips(kFormArea, dotsPerInch);
        return form.width <= room.width() && form.height <= room.height();
    };
    dotsPerInch_ = kScreenDotsPerInch;
    while (dotsPerInch_ > kLeastDotsPerInch && !fits(dotsPerInch_))
        --dotsPerInch_;
    return dotsPerInch_ != before;
}

QFont Look::FontOf(const Font& font) const {
    QFont result;
    if (font.height == 0) return result;
    result.setFamilies({Text(font.face), Text(font.fallback)});
    result.setPixelSize(std::max(kLeastFontSize, PixelsFromTwips(font.height, dotsPerInch_)));
    result.setBold(font.bold);
    return result;
}

FittedText Look::Fit(const Font& font, const QString& text, const QSize& room) const {
    FittedText result{FontOf(font), {}};
    for (;;) {
        const QFontMetrics metrics(result.font);
        result.lines = Wrapped(text, metrics, room.width());
        const bool isLow = result.lines.size() * metrics.height() <= room.height();
        const bool isNarrow = std::ranges::all_of(result.lines, [&](const QString& line) {
            return metrics.horizontalAdvance(line) <= room.width();
        });
        if ((isLow && isNarrow) || result.font.pixelSize() <= kLeastFontSize) return result;
        result.font.setPixelSize(result.font.pixelSize() - 1);
    }
}

QRect Look::PlaceOf(const Rectangle& twips) const {
    const Rectangle pixels = PixelsFromTwips(twips, dotsPerInch_);
    return {pixels.left, pixels.top, pixels.width, pixels.height};
}

QColor Look::ColourOf(const Colour& colour) const {
    if (!HasHighContrast()) return {colour.red, colour.green, colour.blue};
    const bool isForm = colour.red == kFormBackground.red && colour.green == kFormBackground.green &&
                        colour.blue == kFormBackground.blue;
    return palette_.color(isForm ? QPalette::Window : QPalette::WindowText);
}

// Fills in what a style leaves open.
QString Look::Filled(QString style, const QColor& ground) const {
    const bool high = HasHighContrast();
    const QString line = (high ? "2px solid " : "1px solid ") + palette_.color(QPalette::Mid).name();
    const QString dimmed = palette_.color(QPalette::Disabled, QPalette::ButtonText).name();
    const std::array<std::pair<const char*, QString>, 10> values{{
        {"{ground}", ground.name()},
        {"{under}", (high ? ground : ground.darker(kHoverDarkening)).name()},
        {"{pressed}", (high ? ground : ground.darker(kPressDarkening)).name()},
        {"{text}", TextColour().name()},
        {"{dimmed}", dimmed},
        {"{accent}", palette_.color(QPalette::Highlight).name()},
        {"{focused}", (high ? palette_.color(QPalette::Highlight) : ground).name()},
        {"{onfocused}", high ? palette_.color(QPalette::HighlightedText).name() : TextColour().name()},
        {"{line}", line},
        {"{dimmedline}", high ? "2px dashed " + dimmed : line},
    }};
    for (const auto& [place, value] : values)
        style.replace(place, value);
    return style;
}

QString Look::ButtonStyle(const Colour& background) const {
    const QColor plain = HasHighContrast() ? palette_.color(QPalette::Button) : ColourOf(background);
    return Filled(
        "QPushButton { background: {ground}; color: {text}; border: {line}; border-radius: 5px;"
        " outline: none; }"
        "QPushButton:hover { background: {under}; border-color: {accent}; }"
        "QPushButton:focus { background: {focused}; color: {onfocused}; border: 3px solid {accent}; }"
        "QPushButton:pressed { background: {pressed}; }"
        "QPushButton:disabled, QPushButton[dimmed=\"true\"]"
        " { background: {ground}; color: {dimmed}; border: {dimmedline}; }"
        "QPushButton[dimmed=\"true\"]:focus { border: 3px solid {accent}; }",
        plain);
}

QString Look::ListStyle() const {
    return Filled(
        "QListWidget { background: {ground}; color: {text}; border: {line}; border-radius: 3px; }"
        "QListWidget:focus { border: 3px solid {accent}; }",
        palette_.color(QPalette::Base));
}

QString Look::BarStyle() const {
    return Filled(
        "QProgressBar { background: {ground}; border: {line}; border-radius: 4px; }"
        "QProgressBar::chunk { background: {accent}; border-radius: 3px; }",
        HasHighContrast() ? palette_.color(QPalette::Base) : QColor(0xec, 0xee, 0xf1));
}

// In high contrast the style would draw edges in shades of the ground, which nobody could see there.
QString Look::DialogStyle() const {
    QString style = QStringLiteral("QDialogButtonBox { dialogbuttonbox-buttons-have-icons: 0; }");
    if (!HasHighContrast()) return style;
    const QString edges = QStringLiteral(
        "QDialog QPushButton, QDialog QLineEdit, QDialog QComboBox, QDialog QAbstractItemView, QDialog "
        "QToolButton"
        " { background: {ground}; color: {text}; border: {line}; padding: 4px 10px; }"
        "QDialog QToolButton, QDialog QAbstractItemView { padding: 1px; }"
        "QDialog *:focus { border: 3px solid {accent}; }"
        "QDialog QPushButton:focus { background: {focused}; color: {onfocused}; }"
        "QDialog *:disabled { color: {dimmed}; border: {dimmedline}; }"
        "QDialog QHeaderView { border: none; }"
        "QMessageBox { border: {line}; }"
        "QToolTip { background: {ground}; color: {text}; border: {line}; }");
    return style + Filled(edges, palette_.color(QPalette::Window));
}

QString Look::HintStyle() const {
    return Filled(
        "QPushButton { background: {ground}; color: {text}; border: none; text-decoration: underline; }"
        "QPushButton:hover { background: {under}; }"
        "QPushButton:pressed { background: {pressed}; }",
        palette_.color(QPalette::Base));
}

QString Text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString ShownLines(std::string_view utf8) {
    return Text(ShownText(utf8));
}

QString ToolTip(std::string_view utf8) {
    const QString text = ShownLines(utf8);
    return text.isEmpty() ? text : "<p style='white-space:pre-wrap'>" + text.toHtmlEscaped() + "</p>";
}

QPixmap Drawing(const QString& name, int size, qreal pixelRatio) {
    const int pixels = qRound(size * pixelRatio);
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(":/" + name).render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(pixelRatio);
    return pixmap;
}

}  // namespace vento::desktop::qt
