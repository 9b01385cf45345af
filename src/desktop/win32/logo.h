#pragma once

#include "desktop/win32/look.h"
#include "platform/windows/system.h"

namespace vento::desktop::win32 {

/// The logo in the size in which it was last drawn. It is made from its curves, so that it is as fine as the
/// screen.
class Logo {
  public:
    /// Fills `area`.
    void Draw(HDC canvas, const RECT& area);

  private:
    OwnedBitmap picture_;
    SIZE size_{};
};

}  // namespace vento::desktop::win32
