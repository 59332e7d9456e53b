#pragma once

#include "X11Window.h"

#include <cstdint>
#include <optional>

namespace tessly {

class DesktopEntries;
class X11EventLoop;

/// Finds out whose window this is, by what the window tells of itself (_GTK_APPLICATION_ID,
/// _KDE_NET_WM_DESKTOP_FILE, WM_CLASS) and the desktop entries; if it does not even tell a class,
/// by its process. Waits for the server, reads files: loop thread.
[[nodiscard]] X11Window::Owner
ownerOf(xcb_window_t window, X11EventLoop& loop, DesktopEntries& entries);

/// Whether this process made the window. Waits for the server: loop thread.
[[nodiscard]] bool isOfThisProcess(xcb_window_t window, X11EventLoop& loop);

} // namespace tessly
