#include "X11WindowOwner.h"

#include "DesktopEntries.h"
#include "Workspace.h"
#include "X11Property.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <climits>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// WM_CLASS of the program's own windows, in lower case.
constexpr auto ownClass = "tessly"_L1;

/// Properties that hold a name are UTF-8 by newer conventions and Latin-1 by older ones.
QString textOf(const std::string& bytes)
{
    const QByteArrayView view(
        bytes.data(), static_cast<qsizetype>(qstrnlen(bytes.data(), bytes.size())));
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(view);
    return decoder.hasError() ? QString::fromLatin1(view) : text;
}

std::optional<QString> presentOnly(const QString& text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

/// WM_CLASS: two strings, each ended by a zero byte.
struct WindowClass
{
    QString instance;
    QString name;

    explicit WindowClass(const std::string& property)
        : instance(textOf(property))
    {
        const auto end = property.find('\0');
        name = end == std::string::npos ? QString() : textOf(property.substr(end + 1));
    }
};

class Process
{
public:
    Process(xcb_window_t window, X11EventLoop& loop)
        : m_id(loop, window, "_NET_WM_PID")
        , m_machine(loop, window, "WM_CLIENT_MACHINE")
    {
    }

    /// None where the window does not tell, or runs on another machine.
    [[nodiscard]] std::optional<std::uint32_t> localID()
    {
        const auto id = m_id.value();
        const auto machine = m_machine.bytes();
        std::array<char, HOST_NAME_MAX + 1> ownMachine = {};
        gethostname(ownMachine.data(), ownMachine.size() - 1);
        const bool isLocal = machine.empty() || qstrcmp(machine.c_str(), ownMachine.data()) == 0;
        return isLocal ? id : std::nullopt;
    }

private:
    X11Property m_id;
    X11Property m_machine;
};

QString executableName(std::uint32_t processID)
{
    const QString folder = u"/proc/%1/"_s.arg(processID);
    const QString target = QFile::symLinkTarget(folder + u"exe"_s);
    if (!target.isEmpty()) {
        QString name = QFileInfo(target).fileName();
        // What the kernel adds when the file was replaced, as an update does.
        if (name.endsWith(" (deleted)"_L1)) {
            name.chop(10);
        }
        return name;
    }
    // Another user's process: its link is not ours to read, its short name is.
    QFile file(folder + u"comm"_s);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(64)).trimmed() : QString();
}

} // namespace

X11Window::Owner ownerOf(xcb_window_t window, X11EventLoop& loop, DesktopEntries& entries)
{
    X11Property gtkID(loop, window, "_GTK_APPLICATION_ID");
    X11Property kdeFile(loop, window, "_KDE_NET_WM_DESKTOP_FILE");
    X11Property classProperty(loop, window, "WM_CLASS");
    Process process(window, loop);

    const QString toldID = textOf(gtkID.bytes());
    const QString toldFile = textOf(kdeFile.bytes());
    QString entryID = toldID.isEmpty() ? toldFile : toldID;
    const WindowClass windowClass(classProperty.bytes());
    const auto processID = process.localID();

    const auto isOwnName = [](const QString& name) {
        return name.compare(ownClass, Qt::CaseInsensitive) == 0 ||
               name.compare(ownBundleIdentifier, Qt::CaseInsensitive) == 0;
    };
    const bool isOwn = processID == static_cast<std::uint32_t>(getpid()) ||
                       isOwnName(windowClass.instance) || isOwnName(windowClass.name);
    if (isOwn) {
        entryID = ownBundleIdentifier;
    }

    const auto entry = entries.ofWindow(entryID, windowClass.instance, windowClass.name);
    X11Window::Owner owner;
    if (isOwn) {
        owner.applicationID = ownBundleIdentifier;
    } else if (entry) {
        owner.applicationID = entry->id;
    } else {
        owner.applicationID = presentOnly(toldID.isEmpty() ? windowClass.name : toldID);
    }
    for (const auto& name :
         {owner.applicationID.value_or(QString()), toldID, toldFile, windowClass.instance,
          windowClass.name}) {
        if (!name.isEmpty() && !owner.names.contains(name)) {
            owner.names.append(name);
        }
    }
    owner.name = presentOnly(entry ? entry->name : QString());
    if (!owner.name) {
        owner.name = presentOnly(windowClass.name);
    }
    if (!owner.name && processID) {
        owner.name = presentOnly(executableName(*processID));
    }
    owner.chord = pasteChord(
        owner.applicationID.value_or(QString()), windowClass.name,
        entry && entry->isTerminalEmulator);
    return owner;
}

bool isOfThisProcess(xcb_window_t window, X11EventLoop& loop)
{
    return Process(window, loop).localID() == static_cast<std::uint32_t>(getpid());
}

} // namespace tessly
