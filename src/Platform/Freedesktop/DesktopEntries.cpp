#include "DesktopEntries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <glib.h>

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr auto suffix = ".desktop"_L1;
constexpr const char* group = "Desktop Entry";
/// Entries are a few kilobytes, tens with many translations.
constexpr qint64 largestFile = qint64{1024} * 1024;
/// Folders of entries are two deep in practice; a limit ends loops of symbolic links.
constexpr int deepestFolder = 4;

struct KeyFileDeleter
{
    void operator()(GKeyFile* file) const noexcept { g_key_file_free(file); }
};
struct GlibDeleter
{
    void operator()(gchar* text) const noexcept { g_free(text); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileDeleter>;
using GlibText = std::unique_ptr<gchar, GlibDeleter>;

QByteArray contentOf(const QString& path)
{
    // A pipe or device would hang the read.
    if (!QFileInfo(path).isFile()) {
        return {};
    }
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(largestFile) : QByteArray();
}

/// The value of a key in the entry's main group, found without parsing what is not asked for: most
/// of an entry is translations.
QByteArray valueOf(const QByteArray& content, const char* key)
{
    const QByteArray header = QByteArray('[' + QByteArray(group) + "]\n");
    qsizetype begin = content.startsWith(header) ? 0 : content.indexOf('\n' + header);
    if (begin < 0) {
        return {};
    }
    // The group's header ends in a line break, which the search for the key begins with.
    begin = content.indexOf(']', begin) + 1;
    qsizetype end = content.indexOf("\n[", begin);
    end = end < 0 ? content.size() : end;
    const QByteArray name = '\n' + QByteArray(key);
    for (qsizetype at = content.indexOf(name, begin); at >= 0 && at < end;
         at = content.indexOf(name, at + 1)) {
        qsizetype lineEnd = content.indexOf('\n', at + 1);
        lineEnd = lineEnd < 0 ? content.size() : lineEnd;
        const QByteArray rest =
            content.sliced(at + name.size(), lineEnd - at - name.size()).trimmed();
        if (rest.startsWith('=')) {
            return rest.sliced(1).trimmed();
        }
    }
    return {};
}

QByteArray folded(const QString& text)
{
    return text.toLower().toUtf8();
}

} // namespace

DesktopEntries::DesktopEntries()
    : DesktopEntries(QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation))
{
}

DesktopEntries::DesktopEntries(QStringList folders)
    : m_folders(std::move(folders))
{
}

std::optional<DesktopEntry> DesktopEntries::withID(const QString& id)
{
    refresh();
    const bool hasSuffix = id.endsWith(suffix);
    const auto file = m_files.constFind(folded(hasSuffix ? id.chopped(suffix.size()) : id));
    return file == m_files.cend() ? std::nullopt : load(*file);
}

std::optional<DesktopEntry> DesktopEntries::withStartupWMClass(const QString& windowClass)
{
    refresh();
    const auto id = m_ids.constFind(folded(windowClass));
    return id == m_ids.cend() ? std::nullopt : load(m_files.value(*id));
}

std::optional<DesktopEntry> DesktopEntries::ofWindow(
    const QString& applicationID, const QString& instance, const QString& windowClass)
{
    // The instance comes before the class: web applications of one browser share its class.
    std::optional<DesktopEntry> entry;
    const auto tryNext = [&entry](const QString& name, auto find) {
        if (!entry && !name.isEmpty()) {
            entry = find(name);
        }
    };
    const auto byID = [this](const QString& name) { return withID(name); };
    const auto byClass = [this](const QString& name) { return withStartupWMClass(name); };
    tryNext(applicationID, byID);
    tryNext(applicationID, byClass);
    tryNext(instance, byClass);
    tryNext(windowClass, byClass);
    tryNext(instance, byID);
    tryNext(windowClass, byID);
    return entry;
}

void DesktopEntries::refresh()
{
    if (!m_seen.empty() && !isStale()) {
        return;
    }
    m_seen.clear();
    m_files.clear();
    m_ids.clear();
    m_isShown.clear();
    for (int folder = 0; folder < m_folders.size(); ++folder) {
        scan(folder, {}, 0);
    }
    for (const File& file : std::as_const(m_files)) {
        index(file);
    }
    m_isShown = {};
    m_files.squeeze();
    m_ids.squeeze();
}

bool DesktopEntries::isStale() const
{
    return std::ranges::any_of(m_seen, [](const Seen& seen) {
        return QFileInfo(seen.folder).lastModified() != seen.modified;
    });
}

void DesktopEntries::scan(int folder, const QString& below, int depth)
{
    const QString path = m_folders.at(folder) + below;
    // A folder that is not there yet is remembered too: it may come.
    m_seen.push_back({path, QFileInfo(path).lastModified()});
    const auto entries =
        QDir(path).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& entry : entries) {
        const QString relative = below + u'/' + entry.fileName();
        if (entry.isDir()) {
            if (depth < deepestFolder) {
                scan(folder, relative, depth + 1);
            }
        } else if (relative.endsWith(suffix)) {
            // "kde/foo.desktop" has the id "kde-foo.desktop".
            QString id = relative.sliced(1).chopped(suffix.size());
            id.replace(u'/', u'-');
            const QByteArray key = folded(id);
            if (!m_files.contains(key)) {
                m_files.insert(key, {folder, QFile::encodeName(relative), id.toUtf8()});
            }
        }
    }
}

void DesktopEntries::index(const File& file)
{
    const QByteArray content = contentOf(pathOf(file));
    const QByteArray windowClass = valueOf(content, "StartupWMClass");
    if (windowClass.isEmpty() || valueOf(content, "Hidden") == "true") {
        return;
    }
    const QByteArray id = folded(QString::fromUtf8(file.id));
    m_isShown.insert(id, valueOf(content, "NoDisplay") != "true");
    QByteArray& best = m_ids[folded(QString::fromUtf8(windowClass))];
    const auto rank = [this](const QByteArray& key) {
        return std::make_tuple(!m_isShown.value(key), key.size(), key);
    };
    if (best.isEmpty() || rank(id) < rank(best)) {
        best = id;
    }
}

std::optional<DesktopEntry> DesktopEntries::load(const File& file) const
{
    const QByteArray content = contentOf(pathOf(file));
    const KeyFile keys(g_key_file_new());
    // Without translations kept, the file's own language would be all there is.
    const bool isRead = g_key_file_load_from_data(
                            keys.get(), content.constData(), static_cast<gsize>(content.size()),
                            G_KEY_FILE_KEEP_TRANSLATIONS, nullptr) != FALSE;
    if (!isRead || g_key_file_get_boolean(keys.get(), group, "Hidden", nullptr) != FALSE) {
        return std::nullopt;
    }
    const GlibText type(g_key_file_get_string(keys.get(), group, "Type", nullptr));
    if (qstrcmp(type.get(), "Application") != 0) {
        return std::nullopt;
    }
    const GlibText name(g_key_file_get_locale_string(keys.get(), group, "Name", nullptr, nullptr));
    const GlibText categories(g_key_file_get_string(keys.get(), group, "Categories", nullptr));
    return DesktopEntry{
        .id = QString::fromUtf8(file.id),
        .name = QString::fromUtf8(name.get()),
        .isTerminalEmulator = QByteArray(categories.get()).split(';').contains("TerminalEmulator"),
    };
}

QString DesktopEntries::pathOf(const File& file) const
{
    return m_folders.at(file.folder) + QFile::decodeName(file.path);
}

} // namespace tessly
