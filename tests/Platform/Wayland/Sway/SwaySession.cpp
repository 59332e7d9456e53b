#include "SwaySession.h"

#include "SharedSession.h"

#include <QFile>

#include <grp.h>
#include <stdexcept>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

auto& sharedSession = SharedSession<SwaySession>::add();

// It stands in every passwd, and owns nothing.
constexpr uid_t ordinaryUser = 65534;

/// In the child; sway does not run as root.
void becomeOrdinaryUser()
{
    if (geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(ordinaryUser) != 0 || setuid(ordinaryUser) != 0)) {
        _exit(126);
    }
}

} // namespace

SwaySession::SwaySession()
{
    const QByteArray folder = QFile::encodeName(path({}));
    if (geteuid() == 0 && chown(folder.constData(), ordinaryUser, ordinaryUser) != 0) {
        throw std::runtime_error("sway gets no runtime folder");
    }
    QFile ready(path(u"ready"_s));
    QFile config(path(u"config"_s));
    if (!config.open(QIODevice::WriteOnly) ||
        config.write("xwayland disable\n"
                     "exec echo \"$WAYLAND_DISPLAY\" > \"$XDG_RUNTIME_DIR/ready.part\" && "
                     "mv \"$XDG_RUNTIME_DIR/ready.part\" \"$XDG_RUNTIME_DIR/ready\"\n") < 0 ||
        !config.setPermissions(
            QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther)) {
        throw std::runtime_error("sway gets no configuration");
    }
    config.close();
    startCompositor(
        u"sway"_s, {u"--config"_s, config.fileName()},
        {{u"WLR_BACKENDS"_s, u"headless"_s},
         {u"WLR_RENDERER"_s, u"pixman"_s},
         {u"WLR_LIBINPUT_NO_DEVICES"_s, u"1"_s},
         {u"SWAYSOCK"_s, path(u"ipc"_s)}},
        becomeOrdinaryUser, [&ready] { return ready.exists(); });
    if (!ready.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("sway does not tell its socket");
    }
    setSocket(QString::fromUtf8(ready.readAll().trimmed()));
}

SwaySession& SwaySession::shared()
{
    return sharedSession.get();
}

} // namespace tessly::test
