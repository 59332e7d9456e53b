#include "ShellExtension.h"

#include "Workspace.h"

#include <QCoreApplication>
#include <QCoroFuture>
#include <QDBusArgument>
#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>
#include <QPointer>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcShell, "com.brackmoor.tessly.ShellExtension")

const QString extensionName = u"com.brackmoor.tessly.Shell"_s;
const QString extensionPath = u"/com/brackmoor/tessly/Shell"_s;
const QString extensionInterface = u"com.brackmoor.tessly.Shell1"_s;

const QString daemonName = u"org.freedesktop.DBus"_s;
const QString daemonPath = u"/org/freedesktop/DBus"_s;
const QString localPath = u"/org/freedesktop/DBus/Local"_s;
const QString localInterface = u"org.freedesktop.DBus.Local"_s;

/// The class of the program's own windows.
constexpr auto ownClass = "tessly"_L1;
constexpr auto entrySuffix = ".desktop"_L1;

/// Time is kept by the clock; to the bus library, a call may take for ever.
constexpr int noTimeout = std::numeric_limits<int>::max();

QDBusMessage timedOut()
{
    return QDBusMessage::createError(QDBusError::NoReply, u"no answer in time"_s);
}

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
    , m_clock(clock)
    , m_deciding(clock.after(patience, [this] {
        m_isSilent = true;
        m_decided(false);
    }))
{
    m_connecting.start(std::move(connect));
}

ShellExtension::~ShellExtension() = default;

void ShellExtension::connected(const QDBusConnection& bus)
{
    if (!bus.isConnected()) {
        m_decided(false);
        return;
    }
    m_bus = bus;
    // From any sender, told apart when they come: of one that is named, even by its unique name,
    // QtDBus would first ask the bus, and wait.
    m_bus->connect(
        QString(), daemonPath, daemonName, u"NameOwnerChanged"_s, {extensionName}, QString(), this,
        SLOT(ownerChanged(QString, QString, QString, QDBusMessage)));
    for (const QString& signal : {u"FrontChanged"_s, u"WindowClosed"_s}) {
        m_bus->connect(
            QString(), extensionPath, extensionInterface, signal, this, SLOT(heard(QDBusMessage)));
    }
    m_bus->connect(
        QString(), localPath, localInterface, u"Disconnected"_s, this, SLOT(disconnected()));

    auto question =
        QDBusMessage::createMethodCall(daemonName, daemonPath, daemonName, u"GetNameOwner"_s);
    question << extensionName;
    whenAnswered(m_bus->asyncCall(question, noTimeout), [this](const QDBusPendingCall& call) {
        // One that came meanwhile has announced itself.
        if (!m_owner.isEmpty()) {
            return;
        }
        const QDBusPendingReply<QString> reply = call;
        if (reply.isValid()) {
            setOwner(reply.value());
        } else {
            m_decided(false);
        }
    });
}

void ShellExtension::whenAnswered(
    const QDBusPendingCall& call, std::function<void(const QDBusPendingCall&)> answered)
{
    auto* const pending = new QDBusPendingCallWatcher(call, this);
    connect(
        pending, &QDBusPendingCallWatcher::finished, this,
        [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            answered(*finished);
        });
}

void ShellExtension::setOwner(const QString& owner)
{
    if (owner == m_owner) {
        return;
    }
    m_owner = owner;
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
    if (!m_owner.isEmpty()) {
        static_cast<void>(askForFront());
    }
}

QFuture<QDBusMessage> ShellExtension::askForFront()
{
    return call(u"Front"_s, {}, patience, [this, owner = m_owner](const QDBusMessage& reply) {
        if (owner == m_owner) {
            frontTold(reply);
        }
    });
}

/// `answered` hears of answers that come late, too.
QFuture<QDBusMessage> ShellExtension::call(
    const QString& method, const QVariantList& arguments, Clock::Duration patience,
    std::function<void(const QDBusMessage&)> answered)
{
    const LoopAnswer<QDBusMessage> answer(timedOut());
    if (m_bus && !m_owner.isEmpty()) {
        auto message =
            QDBusMessage::createMethodCall(m_owner, extensionPath, extensionInterface, method);
        message.setArguments(arguments);
        // The one that comes second changes nothing.
        const std::shared_ptr<Clock::Timer> deadline =
            m_clock.after(patience, [answer] { answer(timedOut()); });
        whenAnswered(
            m_bus->asyncCall(message, noTimeout),
            [answer, deadline, answered = std::move(answered)](const QDBusPendingCall& call) {
                const QDBusMessage reply = call.reply();
                if (answered) {
                    answered(reply);
                }
                answer(reply);
            });
    }
    return answer.future();
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
    if (!self || m_owner.isEmpty() || m_isSilent) {
        co_return;
    }
    const QString owner = m_owner;
    const QFuture<QDBusMessage> answer = askForFront();
    const QDBusMessage reply = co_await answer;
    if (self && owner == m_owner && QDBusError(reply).type() == QDBusError::NoReply) {
        m_isSilent = true;
    }
}

void ShellExtension::activate(const ShellWindow& window)
{
    // A shell that stands still would carry all of them out later, over what the user does by then.
    if (m_isPresent && !window.isGone() && !std::exchange(m_isActivating, true)) {
        static_cast<void>(call(
            u"Activate"_s, {QVariant::fromValue<qulonglong>(window.id())}, patience,
            [this, owner = m_owner](const QDBusMessage&) {
                if (owner == m_owner) {
                    m_isActivating = false;
                }
            }));
    }
}

QCoro::Task<std::optional<ShellPlace>> ShellExtension::place()
{
    if (!m_isPresent || m_isSilent) {
        co_return std::nullopt;
    }
    const QFuture<QDBusMessage> answer = call(u"Place"_s, {}, placePatience);
    co_return placeTold(co_await answer);
}

void ShellExtension::ownerChanged(
    const QString& /*name*/, const QString& /*before*/, const QString& owner,
    const QDBusMessage& signal)
{
    if (signal.service() == daemonName) {
        setOwner(owner);
    }
}

void ShellExtension::heard(const QDBusMessage& signal)
{
    if (m_owner.isEmpty() || signal.service() != m_owner) {
        return;
    }
    if (signal.member() == "FrontChanged"_L1) {
        frontTold(signal);
    } else if (signal.signature() == "t"_L1) {
        windowClosed(signal.arguments().constFirst().toULongLong());
    }
}

void ShellExtension::disconnected()
{
    setOwner({});
}

} // namespace tessly
