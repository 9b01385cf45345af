#pragma once

#include "platform/posix/file_descriptor.h"
