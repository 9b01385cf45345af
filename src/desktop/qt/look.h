#pragma once

#include <QFont>
#include <QIcon>
#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QString>
#include <string_view>

#include "desktop/layout.h"
#include "text/language.h"

/// The shared layout in the toolkit's terms. The toolkit measures in pixels of 1/96 inch, whatever the
/// screen.
namespace vento::desktop::qt {

inline constexpr int kDotsPerInch = 96;

/// Gives the whole program its look, light on every desktop because the form is white, and the toolkit's own
/// words in `language`.
void ApplyLook(Language language);

/// The toolkit's own words in `language`.
void TranslateToolkit(Language language);

[[nodiscard]] QString Text(std::string_view utf8);
[[nodiscard]] QString ShownLines(std::string_view utf8);
[[nodiscard]] QColor ColourOf(const Colour& colour);
[[nodiscard]] QFont FontOf(const Font& font);
[[nodiscard]] QRect PlaceOf(const Rectangle& twips);
/// A square drawing of the program's own, `size` wide on a screen with this ratio of device pixels to ours.
[[nodiscard]] QPixmap Drawing(const QString& name, int size, qreal pixelRatio);
[[nodiscard]] QIcon ProgramIcon();

/// The style of a button with this background: its border, and how it answers to mouse, keyboard and
/// disabling.
[[nodiscard]] QString ButtonStyle(const Colour& background);
[[nodiscard]] QString ListStyle();
[[nodiscard]] QString BarStyle();

}  // namespace vento::desktop::qt
