#pragma once

#include <string>

#include "platform/windows/system.h"

namespace vento::desktop::win32 {

/// The tool tips of a form.
class ToolTips {
  public:
    explicit ToolTips(HWND form);

    /// From now on the text, in as many lines as it takes, comes up over this window within the form; none if
    /// empty.
    void SetText(HWND window, const std::wstring& text) const;

  private:
    HWND form_;
    HWND tips_;
};

}  // namespace vento::desktop::win32
