// Printing to the MAXScript listener: the host captures every line (hostrt::Listener) and may echo it.
#pragma once

#include "maxtypes.h"

// Formats with the host's rules (%s takes a wide string, see MaxSDK::Format) and appends to the listener.
void mprintf(const MCHAR* format, ...);
// Appends text as it is.
void mputs(const MCHAR* text);
// Flushes the listener (and its echo).
void mflush();
