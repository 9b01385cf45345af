#include "panel/version_ctrl.h"

namespace vento {

void CentreForm(FormPlace& form, platform::TwipSize screen) {
    form.top = screen.height / 2 - form.height / 2;
    form.left = screen.width / 2 - form.width / 2;
}

}  // namespace vento
