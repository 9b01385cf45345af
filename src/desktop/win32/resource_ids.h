#pragma once

/// Numbers by which the program finds its resources and its controls. The system takes the icon with the
/// lowest for the program's.
namespace vento::desktop::win32 {

inline constexpr int kProgramIcon = 1;
inline constexpr int kProgrammeFileIcon = 2;

/// Added to the number of a control: the first few are the system's, for Enter and Esc.
inline constexpr int kFirstControl = 100;

}  // namespace vento::desktop::win32
