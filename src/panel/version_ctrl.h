#pragma once

#include "platform/desktop.h"

namespace vento {

/// Where a form stands and how large it is, in twips.
struct FormPlace {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

/// Module `VersionCtrl`: puts a form into the middle of the screen. Each half is taken as a whole number by
/// itself.
inline void CentreForm(FormPlace& form, platform::TwipSize screen) {
    form.top = screen.height / 2 - form.height / 2;
    form.left = screen.width / 2 - form.width / 2;
}

}  // namespace vento
