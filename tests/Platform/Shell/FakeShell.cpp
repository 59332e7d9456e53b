#include "FakeShell.h"

#include <QCoreApplication>
#include <QDBusMetaType>

#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

const QString shellName = u"com.brackmoor.tessly.Shell"_s;
const QString shellPath = u"/com/brackmoor/tessly/Shell"_s;
const QString shellInterface = u"com.brackmoor.tessly.Shell1"_s;

} // namespace

FakeShell::FakeShell(const TestBus& bus)
    : m_address(bus.address())
{
    qDBusRegisterMetaType<QList<int>>();
    enable();
}

FakeShell::~FakeShell()
{
    disable();
}

void FakeShell::enable()
{
    m_bus = TestBus::connect(m_address);
    const bool isUp =
        m_bus.registerVirtualObject(shellPath, this) && m_bus.registerService(shellName);
    if (!isUp) {
        throw std::runtime_error("the shell cannot get onto the bus");
    }
}

void FakeShell::disable()
{
    if (m_bus.isConnected()) {
        m_unanswered.clear();
        m_bus.unregisterService(shellName);
        m_bus.unregisterObject(shellPath);
        QCoreApplication::removePostedEvents(this);
        const QString name = m_bus.name();
        m_bus = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(name);
    }
}

void FakeShell::show(quint64 window, const QString& windowClass)
{
    show(window, windowClass, {});
}

void FakeShell::show(quint64 window, const QString& windowClass, const QVariantMap& more)
{
    QVariantMap told = {
        {u"window"_s, QVariant::fromValue<qulonglong>(window)},
        {u"pid"_s, 4711},
        {u"desktopEntry"_s, windowClass + u".desktop"_s},
        {u"name"_s, windowClass},
        {u"isTerminal"_s, false},
        {u"applicationId"_s, QString()},
        {u"instance"_s, windowClass},
        {u"class"_s, windowClass}};
    told.insert(more);
    m_windows.insert(window, told);
    bringToFront(window);
}

void FakeShell::grabKeyboard(bool isGrabbed)
{
    m_isGrabbed = isGrabbed;
    tellFront();
}

void FakeShell::bringToFront(quint64 window)
{
    m_front = window;
    tellFront();
}

void FakeShell::showNothing()
{
    bringToFront(0);
}

void FakeShell::close(quint64 window)
{
    m_windows.remove(window);
    if (m_front == window) {
        showNothing();
    }
    send(u"WindowClosed"_s, {QVariant::fromValue<qulonglong>(window)});
}

void FakeShell::send(const QString& signal, const QVariantList& arguments)
{
    auto message = QDBusMessage::createSignal(shellPath, shellInterface, signal);
    message.setArguments(arguments);
    m_bus.send(message);
}

QVariantMap FakeShell::front() const
{
    QVariantMap front = m_windows.value(m_front);
    if (!front.isEmpty()) {
        front.insert(u"hasKeyboard"_s, !m_isGrabbed);
    }
    return front;
}

void FakeShell::tellFront()
{
    send(u"FrontChanged"_s, {front()});
}

int FakeShell::calls(const QString& method) const
{
    return static_cast<int>(m_calls.count(method));
}

QString FakeShell::introspect(const QString& /*path*/) const
{
    return {};
}

bool FakeShell::handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/)
{
    m_calls << message.member();
    if (answers) {
        answer(message);
    } else {
        m_unanswered << message;
    }
    return true;
}

void FakeShell::answerLate()
{
    for (const QDBusMessage& message : std::exchange(m_unanswered, {})) {
        answer(message);
    }
}

void FakeShell::answer(const QDBusMessage& message)
{
    if (nonsense) {
        m_bus.send(message.createReply(*nonsense));
    } else if (message.member() == "Front"_L1) {
        m_bus.send(message.createReply(front()));
    } else if (message.member() == "Activate"_L1) {
        m_bus.send(message.createReply());
        if (const auto window = message.arguments().value(0).toULongLong();
            m_windows.contains(window)) {
            bringToFront(window);
        }
    } else if (message.member() == "Place"_L1) {
        QVariantList place;
        for (const QList<int>& numbers :
             {pointer, pointerMonitor, focusMonitor, QList<int>{3200, 1080}}) {
            place << QVariant::fromValue(numbers);
        }
        m_bus.send(message.createReply(place));
    }
}

} // namespace tessly::test
