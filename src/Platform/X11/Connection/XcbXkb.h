#pragma once

// The header has a member of this name, which C++ keeps for itself.
#pragma GCC diagnostic push
#if defined(__clang__)
#pragma GCC diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#pragma GCC diagnostic pop
