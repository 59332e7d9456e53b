#include "AutostartLoginItem.h"

#include "FileError.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <glib.h>
#include <glib/gstdio.h>

#include <cerrno>
#include <memory>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr int folderMode = 0700;
constexpr int fileMode = 0600;

struct KeyFileDeleter
{
    void operator()(GKeyFile* file) const noexcept { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileDeleter>;

/// Whether a key is there and has this value.
bool hasValue(GKeyFile* file, const char* key, bool value)
{
    GError* error = nullptr;
    const bool found = g_key_file_get_boolean(file, G_KEY_FILE_DESKTOP_GROUP, key, &error) != FALSE;
    if (error != nullptr) {
        // Missing, or no truth value: then it switches nothing off.
        g_error_free(error);
        return false;
    }
    return found == value;
}

QString autostartFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/autostart"_s;
}

} // namespace

AutostartLoginItem::AutostartLoginItem(QString executable)
    : AutostartLoginItem(std::move(executable), autostartFolder())
{
}

AutostartLoginItem::AutostartLoginItem(QString executable, const QString& folder)
    : m_executable(std::move(executable))
    , m_path(folder + u"/com.brackmoor.tessly.desktop"_s)
{
}

AutostartLoginItem::~AutostartLoginItem() = default;

LoginItem::Status AutostartLoginItem::status() const
{
    const QFileInfo info(m_path);
    if (!info.exists()) {
        return Status::notRegistered;
    }
    const KeyFile file(g_key_file_new());
    // Only files are read: opening a pipe would wait for its writer.
    const bool isEntry =
        info.isFile() &&
        g_key_file_load_from_file(
            file.get(), QFile::encodeName(m_path).constData(), G_KEY_FILE_NONE, nullptr) != FALSE &&
        g_key_file_has_group(file.get(), G_KEY_FILE_DESKTOP_GROUP) != FALSE;
    if (!isEntry) {
        return Status::notFound;
    }
    const bool isSwitchedOff = hasValue(file.get(), G_KEY_FILE_DESKTOP_KEY_HIDDEN, true) ||
                               hasValue(file.get(), "X-GNOME-Autostart-enabled", false);
    return isSwitchedOff ? Status::requiresApproval : Status::enabled;
}

void AutostartLoginItem::registerItem()
{
    const QByteArray entry = "[Desktop Entry]\n"
                             "Type=Application\n"
                             "Version=1.5\n"
                             "Name=Tessly\n"
                             "Comment=Find and paste what you copied\n"
                             "Exec=" +
                             m_executable.toUtf8() +
                             "\n"
                             "Icon=com.brackmoor.tessly\n"
                             "Terminal=false\n"
                             "StartupNotify=false\n";
    const QFileInfo info(m_path);
    if (g_mkdir_with_parents(QFile::encodeName(info.path()).constData(), folderMode) != 0) {
        throw FileError(u"create the folder"_s, info.path(), std::errc(errno));
    }
    // A new file in the old one's place: a session that starts meanwhile sees either, whole.
    GError* error = nullptr;
    if (!g_file_set_contents_full(
            QFile::encodeName(m_path).constData(), entry.constData(), entry.size(),
            G_FILE_SET_CONTENTS_CONSISTENT, fileMode, &error)) {
        const std::runtime_error failure(error->message);
        g_error_free(error);
        throw failure;
    }
}

void AutostartLoginItem::unregisterItem()
{
    if (g_unlink(QFile::encodeName(m_path).constData()) != 0 && errno != ENOENT) {
        throw FileError(u"remove"_s, m_path, std::errc(errno));
    }
}

} // namespace tessly
