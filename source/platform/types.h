// The system's types, from the Windows headers on Windows and from the project's own elsewhere. Every other file of the
// library takes them from here.
#pragma once

#ifdef _WIN32
#include "platform/windows/system_headers.h"
#else
#include "platform/structures.h"
#endif
