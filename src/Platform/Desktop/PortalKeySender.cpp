#include "PortalKeySender.h"

#include <QCoroFuture>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <array>
#include <chrono>
#include <ranges>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcKeys, "com.brackmoor.tessly.PortalKeySender")

const QString interface = u"org.freedesktop.portal.RemoteDesktop"_s;

constexpr quint32 keyboard = 1;
constexpr quint32 untilRevoked = 2;
/// The first version of the interface that remembers.
constexpr quint32 firstWithTokens = 2;
/// A paste that comes later surprises.
constexpr auto keyPatience = 3s;
/// Desktops tell that the screen is unlocked a little before they let programs press keys again.
constexpr auto unlocking = 3s;
/// Within which modifiers are let go that were down when the panel closed.
constexpr auto modifiersLater = 250ms;
/// A portal that breaks at each start is left alone.
constexpr int brokenStartsAtMost = 3;

// Keys, as the kernel numbers them.
constexpr quint32 leftControl = 29;
constexpr quint32 leftShift = 42;
constexpr quint32 insert = 110;
constexpr std::array<quint32, 8> modifiers = {
    leftShift,   54,  // Shift
    56,          100, // Alt
    125,         126, // Meta
    leftControl, 97,  // Control
};

struct Stroke
{
    quint32 key;
    bool isPress;
    /// Whether it is the chord's, and does not just lift what may be held.
    bool isChord;
};

std::vector<Stroke> strokes(PasteChord chord, quint32 keyOfV)
{
    std::vector<quint32> keys;
    switch (chord) {
    case PasteChord::controlV:
        keys = {leftControl, keyOfV};
        break;
    case PasteChord::controlShiftV:
        keys = {leftControl, leftShift, keyOfV};
        break;
    case PasteChord::shiftInsert:
        keys = {leftShift, insert};
        break;
    }
    std::vector<Stroke> strokes;
    strokes.reserve(modifiers.size() + 2 * keys.size());
    for (const quint32 modifier : modifiers) {
        strokes.push_back({.key = modifier, .isPress = false, .isChord = false});
    }
    for (const quint32 key : keys) {
        strokes.push_back({.key = key, .isPress = true, .isChord = true});
    }
    for (const quint32 key : keys | std::views::reverse) {
        strokes.push_back({.key = key, .isPress = false, .isChord = true});
    }
    return strokes;
}

QVariant asObject(const PortalSession& session)
{
    return QVariant::fromValue(QDBusObjectPath(session.path()));
}

} // namespace

PortalKeySender::PortalKeySender(
    DesktopPortal& portal, std::unique_ptr<RestoreTokenFile> tokens, KeyOfV keyOfV)
    : m_portal(portal)
    , m_tokens(std::move(tokens))
    , m_keyOfV(std::move(keyOfV))
{
    setHeldKeys({});
    const auto read = [](QPointer<PortalKeySender> self, QFuture<QString> token) -> QCoro::Task<> {
        QString kept = co_await token;
        if (self) {
            self->m_token = std::move(kept);
            self->resume();
        }
    };
    read(this, m_tokens->read());
    connect(&m_portal, &DesktopPortal::stateChanged, this, [this] { portalChanged(); });
    connect(&m_portal, &DesktopPortal::screenUnlocked, this, [this] {
        m_unlocking = m_portal.clock().after(unlocking, [this] { resume(); });
    });
    portalChanged();
}

PortalKeySender::~PortalKeySender() = default;

void PortalKeySender::portalChanged()
{
    switch (m_portal.state()) {
    case DesktopPortal::State::undecided:
        break;
    case DesktopPortal::State::absent:
        m_support = Support::lacking;
        m_isWanted = false;
        drop();
        break;
    case DesktopPortal::State::present:
        m_support = Support::unknown;
        ++m_portals;
        lookAtPortal(this);
        break;
    }
}

QCoro::Task<> PortalKeySender::lookAtPortal(QPointer<PortalKeySender> self)
{
    const quint32 version = co_await self->m_portal.version(interface);
    if (!self || self->m_portal.state() != DesktopPortal::State::present) {
        co_return;
    }
    self->m_version = version;
    if (version == 0) {
        self->m_support = Support::lacking;
        self->m_isWanted = false;
        if (!std::exchange(self->m_hasToldLack, true)) {
            qCInfo(lcKeys, "The desktop's portal lets no program press keys");
        }
        co_return;
    }
    self->m_support = Support::there;
    self->resume();
}

/// Begins what has been waiting for the portal and the file.
void PortalKeySender::resume()
{
    if (m_support != Support::there || !m_token || m_isBeginning || isAllowed()) {
        return;
    }
    if (m_isWanted) {
        begin(this, Reason::requested);
    } else if (!m_token->isEmpty() && !m_isDenied && m_brokenStarts < brokenStartsAtMost) {
        begin(this, Reason::tokenKept);
    }
}

bool PortalKeySender::requestAccess()
{
    if (m_support == Support::lacking) {
        // For the next time, if there is one to be started.
        m_portal.wake();
    } else if (!isAllowed() && !m_isDenied) {
        m_isWanted = true;
        resume();
    }
    return true;
}

bool PortalKeySender::askAgain()
{
    if (!m_isBeginning) {
        m_isDenied = false;
    }
    return requestAccess() && m_support != Support::lacking;
}

QCoro::Task<> PortalKeySender::begin(QPointer<PortalKeySender> self, Reason reason)
{
    self->m_isBeginning = true;
    self->m_isWanted = false;
    const quint32 portals = self->m_portals;
    Ending ending = co_await start(self);
    if (self && ending == Ending::tokenRefused) {
        self->keepToken(QString());
        if (reason == Reason::requested) {
            ending = co_await start(self);
        }
    }
    if (!self) {
        co_return;
    }
    self->m_isBeginning = false;
    switch (ending) {
    case Ending::started:
        self->m_brokenStarts = 0;
        qCInfo(lcKeys, "The portal lets the program press keys");
        break;
    case Ending::denied:
        self->m_isDenied = true;
        self->m_isWanted = false;
        self->keepToken(QString());
        qCInfo(lcKeys, "The program may not press keys");
        break;
    case Ending::tokenRefused:
        break;
    case Ending::broken:
        ++self->m_brokenStarts;
        qCWarning(lcKeys, "The portal did not get to letting the program press keys");
        break;
    }
    if (ending != Ending::started) {
        self->drop();
    }
    // What came to nothing is not tried again by itself, unless with another portal.
    if (self->m_isWanted || self->m_portals != portals) {
        self->resume();
    }
}

/// Goes through the questions that lead to a session that has started.
QCoro::Task<PortalKeySender::Ending> PortalKeySender::start(QPointer<PortalKeySender> self)
{
    auto session = co_await self->m_portal.createSession(interface);
    if (!self || !session) {
        co_return Ending::broken;
    }
    self->m_session = std::move(session);
    self->m_session->setClosed([sender = self.data()] {
        qCInfo(lcKeys, "The portal has ended the program's leave to press keys");
        sender->drop();
    });

    QVariantMap options = {{u"types"_s, keyboard}};
    const QString token = self->m_token.value_or(QString());
    if (self->m_version >= firstWithTokens) {
        options.insert(u"persist_mode"_s, untilRevoked);
        if (!token.isEmpty()) {
            options.insert(u"restore_token"_s, token);
        }
    }
    const QFuture<DesktopPortal::Response> selecting = self->m_portal.request(
        interface, u"SelectDevices"_s, {asObject(*self->m_session)}, options,
        DesktopPortal::Asks::nobody);
    const auto selected = co_await selecting;
    if (!self || !self->m_session) {
        co_return Ending::broken;
    }
    if (selected.outcome != DesktopPortal::Outcome::granted) {
        if (selected.outcome == DesktopPortal::Outcome::failed) {
            co_return Ending::broken;
        }
        co_return token.isEmpty() ? Ending::denied : Ending::tokenRefused;
    }

    const QFuture<DesktopPortal::Response> starting = self->m_portal.request(
        interface, u"Start"_s, {asObject(*self->m_session), QString()}, {},
        DesktopPortal::Asks::theUser);
    const auto started = co_await starting;
    if (!self) {
        co_return Ending::broken;
    }
    if (started.outcome == DesktopPortal::Outcome::failed) {
        co_return Ending::broken;
    }
    if (started.outcome != DesktopPortal::Outcome::granted) {
        co_return Ending::denied;
    }
    // Each token serves once; this start has used up the one there was.
    self->keepToken(started.results.value(u"restore_token"_s).toString());
    if (!self->m_session) {
        co_return Ending::broken;
    }
    if ((started.results.value(u"devices"_s).toUInt() & keyboard) == 0) {
        co_return Ending::denied;
    }
    self->m_isStarted = true;
    co_return Ending::started;
}

void PortalKeySender::keepToken(const QString& token)
{
    if (m_token != token) {
        m_token = token;
        m_tokens->write(token);
    }
}

void PortalKeySender::drop()
{
    m_isStarted = false;
    m_session.reset();
}

void PortalKeySender::setHeldKeys(HeldKeys heldKeys)
{
    m_heldKeys = std::move(heldKeys);
    if (!m_heldKeys.hadModifiers) {
        m_heldKeys.hadModifiers = [] {
            return (QGuiApplication::keyboardModifiers() &
                    (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier |
                     Qt::MetaModifier)) != Qt::NoModifier;
        };
    }
}

QCoro::Task<bool> PortalKeySender::ready()
{
    const QPointer self(this);
    if (m_heldKeys.hotKeysUp) {
        const QFuture<bool> up = m_heldKeys.hotKeysUp();
        co_await up;
    }
    if (!self || !self->m_heldKeys.hadModifiers()) {
        co_return self != nullptr;
    }
    const LoopAnswer<bool> waited(false);
    const auto timer = self->m_portal.clock().after(modifiersLater, [waited] { waited(true); });
    const QFuture<bool> end = waited.future();
    co_await end;
    co_return self != nullptr;
}

QCoro::Task<KeySender::Sending>
PortalKeySender::send(PasteChord chord, std::shared_ptr<const PasteTarget>)
{
    const quint32 keyOfV = m_keyOfV ? m_keyOfV() : 0;
    if (!isAllowed() || keyOfV == 0) {
        co_return Sending::failed;
    }
    const QPointer self(this);
    const QString session = m_session->path();
    // All at once, in order: whatever becomes of this program or the portal, no key is left to be
    // released later, and no other chord comes between.
    std::vector<QFuture<QDBusMessage>> answers;
    for (const Stroke& stroke : strokes(chord, keyOfV)) {
        QFuture<QDBusMessage> answer = m_portal.call(
            interface, u"NotifyKeyboardKeycode"_s,
            {asObject(*m_session), QVariantMap(), static_cast<int>(stroke.key),
             stroke.isPress ? 1U : 0U},
            keyPatience);
        // Where nothing is to be lifted, some portals say that this is an error.
        if (stroke.isChord) {
            answers.push_back(std::move(answer));
        }
    }
    QString error;
    for (const QFuture<QDBusMessage>& answer : answers) {
        const QDBusMessage reply = co_await answer;
        if (reply.type() != QDBusMessage::ReplyMessage && error.isNull()) {
            error = reply.errorMessage();
        }
    }
    if (error.isNull()) {
        co_return Sending::sent;
    }
    qCWarning(lcKeys).noquote() << "Keys were not taken:" << error;
    if (self && self->m_session && self->m_session->path() == session) {
        // What is sent to a portal that hangs would be pressed when it wakes, whatever has the
        // keyboard then.
        self->drop();
        self->resume();
    }
    co_return Sending::failed;
}

} // namespace tessly
