#include "desktop/qt/look.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QStyleFactory>
#include <QSvgRenderer>
#include <array>

#include "desktop/shown_text.h"

namespace vento::desktop::qt {
namespace {

constexpr std::string_view kAccent = "#2f6fb5";
constexpr std::string_view kBorder = "#9aa0a8";
constexpr std::string_view kDimmed = "#8a9099";
constexpr int kHoverDarkening = 106;  // percent of darkness
constexpr int kPressDarkening = 118;

QPalette LightPalette() {
    const QColor text = ColourOf(kFormText);
    QPalette palette(ColourOf({240, 240, 240}), ColourOf(kFormBackground));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, QColor(Text(kDimmed)));
    }
    palette.setColor(QPalette::Base, ColourOf(kFormBackground));
    palette.setColor(QPalette::ToolTipBase, QColor(255, 255, 225));
    palette.setColor(QPalette::Highlight, QColor(Text(kAccent)));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(Text(kDimmed)));
    return palette;
}

}  // namespace

void ApplyLook(Language language) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QApplication::setPalette(LightPalette());
    QApplication::setWindowIcon(ProgramIcon());
    TranslateToolkit(language);
}

QString Text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString ShownLines(std::string_view utf8) {
    return Text(ShownText(utf8));
}

QColor ColourOf(const Colour& colour) {
    return {colour.red, colour.green, colour.blue};
}

QFont FontOf(const Font& font) {
    QFont result;
    if (font.height == 0) return result;
    result.setFamilies({Text(font.face), Text(font.fallback)});
    result.setPixelSize(PixelsFromTwips(font.height, kDotsPerInch));
    result.setBold(font.bold);
    return result;
}

QRect PlaceOf(const Rectangle& twips) {
    const Rectangle pixels = PixelsFromTwips(twips, kDotsPerInch);
    return {pixels.left, pixels.top, pixels.width, pixels.height};
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

QIcon ProgramIcon() {
    QIcon icon;
    for (const int size : std::array{16, 32, 48, 128})
        icon.addPixmap(Drawing("vento.svg", size, 1));
    return icon;
}

QString ButtonStyle(const Colour& background) {
    const QColor plain = ColourOf(background);
    return QStringLiteral(
               "QPushButton { background: %1; color: %2; border: 1px solid %3; border-radius: 5px; }"
               "QPushButton:hover { background: %4; }"
               "QPushButton:focus { border: 2px solid %5; }"
               "QPushButton:pressed { background: %6; }"
               "QPushButton:disabled { background: #f4f4f4; color: %7; border-color: #d0d4d9; }")
        .arg(plain.name(), ColourOf(kFormText).name(), Text(kBorder), plain.darker(kHoverDarkening).name(),
             Text(kAccent), plain.darker(kPressDarkening).name(), Text(kDimmed));
}

QString ListStyle() {
    return QStringLiteral(
               "QListWidget { background: white; border: 1px solid %1; border-radius: 3px; }"
               "QListWidget:focus { border: 2px solid %2; }")
        .arg(Text(kBorder), Text(kAccent));
}

QString BarStyle() {
    return QStringLiteral(
               "QProgressBar { background: #eceef1; border: 1px solid %1; border-radius: 4px; }"
               "QProgressBar::chunk { background: %2; border-radius: 3px; }")
        .arg(Text(kBorder), Text(kAccent));
}

}  // namespace vento::desktop::qt
