#pragma once

#include <QUrl>

namespace tessly {

/// Opens a URL with the program that the desktop has for it; false if there is none. Returns
/// without waiting for that program: it is started by a thread of its own, and a failure to start
/// is logged.
///
/// GIO knows the programs. It is loaded at the first call, since as a linked library it would cost
/// the resting program a megabyte.
[[nodiscard]] bool openWithDesktop(const QUrl& url);

} // namespace tessly
