#include "StatusReport.h"

#include <QtGlobal>

using namespace Qt::StringLiterals;

namespace tessly {

QString sessionType()
{
    // Who starts a program from elsewhere, as over ssh, names a display but no session type.
    const bool isWayland = qEnvironmentVariable("XDG_SESSION_TYPE") == u"wayland"_s ||
                           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    return isWayland ? u"wayland"_s : u"x11"_s;
}

} // namespace tessly
