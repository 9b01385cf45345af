#pragma once

#include <windows.h>

// The system's headers have macros for names that are ours.
#undef Yield
