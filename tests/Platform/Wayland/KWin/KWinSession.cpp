#include "KWinSession.h"

#include "SharedSession.h"

#include <QFile>
#include <QStandardPaths>

#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

auto& sharedSession = SharedSession<KWinSession>::add();

/// Whether a program listens on this socket.
bool isListening(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, name.constData(), sizeof address.sun_path);
    const int file = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isListening =
        file >= 0 &&
        connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    if (file >= 0) {
        close(file);
    }
    return isListening;
}

} // namespace

KWinSession::KWinSession()
{
    // A copy has none of the file capabilities of the original, which not everyone may use.
    const QString original = QStandardPaths::findExecutable(u"kwin_wayland"_s);
    const QString program = path(u"kwin_wayland"_s);
    if (original.isEmpty() || !QFile::copy(original, program)) {
        throw std::runtime_error("kwin_wayland is not installed");
    }
    const QString socketName = u"kwin"_s;
    startCompositor(
        program,
        {u"--virtual"_s, u"--width"_s, u"800"_s, u"--height"_s, u"600"_s, u"--socket"_s, socketName,
         u"--no-lockscreen"_s, u"--no-global-shortcuts"_s},
        {{u"KWIN_COMPOSE"_s, u"Q"_s},
         {u"KWIN_WAYLAND_NO_PERMISSION_CHECKS"_s, u"1"_s},
         {u"XDG_CONFIG_HOME"_s, path(u"config"_s)},
         {u"XDG_CACHE_HOME"_s, path(u"cache"_s)},
         {u"DBUS_SESSION_BUS_ADDRESS"_s, u"disabled:"_s}},
        [] {}, [this, socketName] { return isListening(path(socketName)); });
    setSocket(socketName);
}

KWinSession& KWinSession::shared()
{
    return sharedSession.get();
}

} // namespace tessly::test
