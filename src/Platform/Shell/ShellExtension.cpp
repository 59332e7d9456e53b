#include "ShellExtension.h"

#include "Workspace.h"

#include <QCoreApplication>
#include <QCoroFuture>
#include <QDBusArgument>
#include <QDBusError>
#include <QLoggingCategory>
#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcShell, "com.brackmoor.tessly.ShellExtension")

const QString frontChangedSignal = u"FrontChanged"_s;
const QString windowClosedSignal = u"WindowClosed"_s;

/// The class of the program's own windows.
constexpr auto ownClass = "tessly"_L1;
constexpr auto entrySuffix = ".desktop"_L1;

bool isOwn(const QVariantMap& window, const QString& windowClass)
{
    return window.value(u"pid"_s).toLongLong() == QCoreApplication::applicationPid() ||
           windowClass.compare(ownClass, Qt::CaseInsensitive) == 0 ||
           windowClass.compare(ownBundleIdentifier, Qt::CaseInsensitive) == 0;
}

TrackedWindow::Owner ownerOf(const QVariantMap& window)
{
    const auto text = [&window](const QString& key) { return window.value(key).toString(); };
    const QString windowClass = text(u"class"_s);
    QString id = text(u"desktopEntry"_s);
    if (id.endsWith(entrySuffix)) {
        id.chop(entrySuffix.size());
    }
    if (isOwn(window, windowClass)) {
        id = ownBundleIdentifier;
    }
    TrackedWindow::Owner owner;
    // The surest first.
    for (const QString& name : {id, text(u"applicationId"_s), windowClass, text(u"instance"_s)}) {
        if (!name.isEmpty() && !owner.names.contains(name)) {
            owner.names.append(name);
        }
    }
    if (!owner.names.isEmpty()) {
        owner.applicationID = owner.names.constFirst();
    }
    for (const QString& name : {text(u"name"_s), windowClass}) {
        if (!name.isEmpty() && !owner.name) {
            owner.name = name;
        }
    }
    owner.chord = pasteChord(
        owner.applicationID.value_or(QString()), windowClass,
        window.value(u"isTerminal"_s).toBool());
    return owner;
}

QRect rectangle(const QList<int>& numbers)
{
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

/// No desktop is larger; sums of such numbers still are numbers.
bool arePlausible(const QList<QList<int>>& told)
{
    constexpr int furthest = 1'000'000;
    return std::ranges::all_of(told, [](const QList<int>& numbers) {
        return std::ranges::all_of(
            numbers, [](int number) { return -furthest <= number && number <= furthest; });
    });
}

std::optional<ShellPlace> placeTold(const QDBusMessage& reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != "aiaiaiai"_L1) {
        return std::nullopt;
    }
    QList<QList<int>> told;
    for (const QVariant& argument : reply.arguments()) {
        told.append(qdbus_cast<QList<int>>(argument));
    }
    if (told[0].size() != 2 || told[1].size() != 4 || told[2].size() != 4 || told[3].size() != 2 ||
        !arePlausible(told)) {
        return std::nullopt;
    }
    return ShellPlace{
        .pointer = {told[0][0], told[0][1]},
        .pointerMonitor = rectangle(told[1]),
        .focusMonitor = rectangle(told[2]),
        .desktop = {told[3][0], told[3][1]}};
}

} // namespace

ShellExtension::ShellExtension(Connect connect, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_peer(
          std::move(connect),
          {.service = u"com.brackmoor.tessly.Shell"_s,
           .path = u"/com/brackmoor/tessly/Shell"_s,
           .interface = u"com.brackmoor.tessly.Shell1"_s},
          {frontChangedSignal, windowClosedSignal}, clock)
    , m_deciding(clock.after(timeout, [this] {
        m_isSilent = true;
        m_decided(false);
    }))
{
    QObject::connect(&m_peer, &BusPeer::ownerChanged, this, &ShellExtension::ownerChanged);
    QObject::connect(&m_peer, &BusPeer::received, this, &ShellExtension::heard);
}

ShellExtension::~ShellExtension() = default;

void ShellExtension::ownerChanged()
{
    m_isSilent = false;
    m_isActivating = false;
    m_hasToldNonsense = false;
    // Of windows that close from now on nothing is told.
    for (const auto& known : std::exchange(m_windows, {})) {
        known.second->setGone();
    }
    if (std::exchange(m_isPresent, false)) {
        qCInfo(lcShell, "The extension of GNOME Shell has gone");
        setFront({});
    }
    if (m_peer.isThere()) {
        askForFront();
    } else {
        m_decided(false);
    }
}

QFuture<QDBusMessage> ShellExtension::askForFront()
{
    return m_peer.call(
        u"Front"_s, {}, timeout, [this, owner = m_peer.owner()](const QDBusMessage& reply) {
            if (owner == m_peer.owner()) {
                frontTold(reply);
            }
        });
}

/// An answer, or the signal.
void ShellExtension::frontTold(const QDBusMessage& message)
{
    m_isSilent = false;
    const bool isTold =
        message.type() != QDBusMessage::ErrorMessage && message.signature() == "a{sv}"_L1;
    const auto told =
        isTold ? qdbus_cast<QVariantMap>(message.arguments().constFirst()) : QVariantMap();
    const QVariant id = told.value(u"window"_s);
    if (!isTold || (!told.isEmpty() && id.typeId() != QMetaType::ULongLong)) {
        if (!std::exchange(m_hasToldNonsense, true)) {
            qCWarning(lcShell).noquote()
                << "The extension of GNOME Shell does not tell what is in front:"
                << (isTold ? u"no window"_s : message.errorMessage());
        }
        m_decided(false);
        return;
    }
    if (!std::exchange(m_isPresent, true)) {
        qCInfo(lcShell, "GNOME Shell tells which application is in front");
    }
    Front front;
    if (!told.isEmpty()) {
        auto& window = m_windows[id.toULongLong()];
        if (!window) {
            window = std::make_shared<ShellWindow>(id.toULongLong(), ownerOf(told));
        } else {
            window->setOwner(ownerOf(told));
        }
        front = {.window = window, .hasKeyboard = told.value(u"hasKeyboard"_s).toBool()};
    }
    setFront(front);
    m_decided(true);
}

void ShellExtension::setFront(const Front& front)
{
    const Front before = std::exchange(m_front, front);
    if (before.window == front.window) {
        return;
    }
    if (before.window) {
        m_history->add(before.window);
    }
    Q_EMIT frontChanged();
}

void ShellExtension::windowClosed(quint64 id)
{
    const auto known = m_windows.extract(id);
    if (!known) {
        return;
    }
    // First it is not in front, then it is gone: nothing that is gone is active.
    if (m_front.window == known.mapped()) {
        setFront({});
    }
    known.mapped()->setGone();
}

QCoro::Task<> ShellExtension::catchUp()
{
    const QPointer<ShellExtension> self(this);
    const QFuture<bool> decided = m_decided.future();
    co_await decided;
    if (!self || !m_peer.isThere() || m_isSilent) {
        co_return;
    }
    const QString owner = m_peer.owner();
    const QFuture<QDBusMessage> answer = askForFront();
    const QDBusMessage reply = co_await answer;
    if (self && owner == m_peer.owner() && QDBusError(reply).type() == QDBusError::NoReply) {
        m_isSilent = true;
    }
}

void ShellExtension::activate(const ShellWindow& window)
{
    // A shell that stands still would carry all of them out later, over what the user does by then.
    if (m_isPresent && !window.isGone() && !std::exchange(m_isActivating, true)) {
        m_peer.call(
            u"Activate"_s, {QVariant::fromValue<qulonglong>(window.id())}, timeout,
            [this, owner = m_peer.owner()](const QDBusMessage&) {
                if (owner == m_peer.owner()) {
                    m_isActivating = false;
                }
            });
    }
}

QCoro::Task<std::optional<ShellPlace>> ShellExtension::place()
{
    if (!m_isPresent || m_isSilent) {
        co_return std::nullopt;
    }
    const QFuture<QDBusMessage> answer = m_peer.call(u"Place"_s, {}, placeTimeout);
    co_return placeTold(co_await answer);
}

void ShellExtension::heard(const QDBusMessage& signal)
{
    if (signal.member() == frontChangedSignal) {
        frontTold(signal);
    } else if (signal.signature() == "t"_L1) {
        windowClosed(signal.arguments().constFirst().toULongLong());
    }
}

} // namespace tessly
