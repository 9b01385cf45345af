#pragma once

#include <QFont>
#include <QIcon>
#include <QPalette>
#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <string_view>

#include "desktop/layout.h"
#include "text/language.h"

namespace vento::desktop::qt {

/// The toolkit's pixels are this many to an inch of every screen.
inline constexpr int kScreenDotsPerInch = 96;

/// What a title bar and borders take, about.
inline constexpr QSize kWindowFrame{8, 40};

/// How much contrast the desktop asks for.
enum class Contrast : std::uint8_t { normal, highOnLight, highOnDark };

struct FittedText {
    QFont font;
    QStringList lines;
};

/// The shared layout in the toolkit's terms. The toolkit measures in pixels of 1/96 inch whatever the screen,
/// and a screen too small for the form makes an inch shorter.
///
/// The form is white on every desktop, light or dark, unless high contrast is asked for.
class Look {
  public:
    /// Gives the whole program its style and its icon.
    Look();

    void SetContrast(Contrast contrast);
    [[nodiscard]] bool HasHighContrast() const { return contrast_ != Contrast::normal; }

    /// Has the form fit into an area of a screen, its title bar included. True if that changes anything.
    bool FitInto(const QSize& area);

    /// For whoever shows the layout: the length of an inch.
    [[nodiscard]] int DotsPerInch() const { return dotsPerInch_; }

    [[nodiscard]] QFont FontOf(const Font& font) const;
    /// Breaks a text into lines that fit into `room`, with the font made smaller until they do, where that is
    /// possible. Lines stand as close as the font allows.
    [[nodiscard]] FittedText Fit(const Font& font, const QString& text, const QSize& room) const;
    [[nodiscard]] QRect PlaceOf(const Rectangle& twips) const;
    /// A colour of the form, or what stands for it in high contrast.
    [[nodiscard]] QColor ColourOf(const Colour& colour) const;
    [[nodiscard]] QColor TextColour() const { return palette_.color(QPalette::WindowText); }

    /// The style of a button with this background: its border, and how it answers to mouse, keyboard and
    /// disabling. The property "dimmed" gives it the colours of a disabled one.
    [[nodiscard]] QString ButtonStyle(const Colour& background) const;
    [[nodiscard]] QString ListStyle() const;
    [[nodiscard]] QString BarStyle() const;
    [[nodiscard]] QString HintStyle() const;

  private:
    [[nodiscard]] QString DialogStyle() const;
    [[nodiscard]] QString Filled(QString style, const QColor& ground) const;

    QPalette palette_;
    Contrast contrast_ = Contrast::normal;
    int dotsPerInch_ = 0;
};

/// The toolkit's own words in `language`.
void TranslateToolkit(Language language);

[[nodiscard]] QString Text(std::string_view utf8);
[[nodiscard]] QString ShownLines(std::string_view utf8);
/// A plain text as a tool tip: what looks like markup stays as it is.
[[nodiscard]] QString ToolTip(std::string_view utf8);
/// A square drawing of the program's own, `size` wide on a screen with this ratio of device pixels to ours.
[[nodiscard]] QPixmap Drawing(const QString& name, int size, qreal pixelRatio);

}  // namespace vento::desktop::qt
