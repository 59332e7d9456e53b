#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tessly {

/// What the desktop knows of an installed application.
struct DesktopEntry
{
    /// Without ".desktop".
    QString id;
    /// In the user's language; empty if the entry has none.
    QString name;
    bool isTerminalEmulator = false;

    bool operator==(const DesktopEntry&) const = default;
};

/// The desktop entries of the installed applications.
///
/// Nothing is read before the first question; what is kept then is one short record for each entry,
/// made anew when a folder has changed. An object is used by one thread at a time. It reads files:
/// not for the main thread.
///
/// GLib's key files are used and not GDesktopAppInfo, which keeps every entry whole, watches the
/// folders with a thread of its own, and knows nothing of entries whose program is not in $PATH.
class DesktopEntries
{
public:
    /// The entries in $XDG_DATA_HOME and $XDG_DATA_DIRS.
    DesktopEntries();
    /// The entries in these folders and those below them; of two with the same id the first holds.
    explicit DesktopEntries(QStringList folders);

    /// An entry by its id, with or without ".desktop". Letter case does not matter: an
    /// application's window is often named like its entry but for the case.
    [[nodiscard]] std::optional<DesktopEntry> withID(const QString& id);

    /// The entry that claims windows of this class (or instance) by its StartupWMClass. Letter case
    /// does not matter. Of several, one that is shown in menus, and of those the shortest id.
    [[nodiscard]] std::optional<DesktopEntry> withStartupWMClass(const QString& windowClass);

    /// The entry of a window by what it tells of itself, the surest first; any may be empty.
    /// `applicationID` is an entry's id by promise (_GTK_APPLICATION_ID, a Wayland app_id).
    [[nodiscard]] std::optional<DesktopEntry>
    ofWindow(const QString& applicationID, const QString& instance, const QString& windowClass);

private:
    struct File
    {
        /// The folder of the search path it is in.
        int folder = 0;
        /// Below that folder, in the file system's encoding.
        QByteArray path;
        /// In UTF-8, with its letter case.
        QByteArray id;
    };
    struct Seen
    {
        QString folder;
        QDateTime modified;
    };

    void refresh();
    [[nodiscard]] bool isStale() const;
    void scan(int folder, const QString& below, int depth);
    void index(const File& file);
    [[nodiscard]] std::optional<DesktopEntry> load(const File& file) const;
    [[nodiscard]] QString pathOf(const File& file) const;

    QStringList m_folders;
    std::vector<Seen> m_seen;
    /// By the lower-cased id. A file without a usable entry stays: it hides those of later folders.
    QHash<QByteArray, File> m_files;
    /// Lower-cased StartupWMClass to lower-cased id.
    QHash<QByteArray, QByteArray> m_ids;
    /// Lower-cased ids that are not shown in menus, while the index is being made.
    QHash<QByteArray, bool> m_isShown;
};

} // namespace tessly
