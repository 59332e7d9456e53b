#include "PortalKeySender.h"

#include "Delay.h"
#include "PasteTarget.h"

#include <QCoroFuture>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <chrono>
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
constexpr auto keyTimeout = 3s;
/// Desktops tell that the screen is unlocked a little before they let programs press keys again.
constexpr auto unlocking = 3s;
/// Within which modifiers are let go that were down when the panel closed.
constexpr auto modifiersLater = 250ms;
/// The same for those of a key of the desktop's own, of which nothing is known: it has started a
/// program meanwhile.
constexpr auto unknownModifiersLater = 100ms;
/// Within which a portal answers that will take keys at once.
constexpr auto responseTimeout = 300ms;
/// Between tries to hear from a portal that does not answer; then twice as long each time.
constexpr auto firstLookAgain = 30s;
constexpr auto lastLookAgain = 10min;
/// How much later than the end of the session the lock may be told that was the reason.
constexpr auto lockLater = 5s;
/// A portal that breaks at each start is left alone.
constexpr int brokenStartsAtMost = 3;

/// As in linux/input-event-codes.h: Shift, Alt, Meta and Control, each on the left and the right.
constexpr std::array<quint32, 8> modifiers = {42, 54, 56, 100, 125, 126, 29, 97};

QVariant asObject(const PortalSession& session)
{
    return QVariant::fromValue(QDBusObjectPath(session.path()));
}

} // namespace

PortalKeySender::PortalKeySender(
    DesktopPortal& portal, std::unique_ptr<RestoreTokenFile> tokens, Strokes strokes)
    : m_portal(portal)
    , m_tokens(std::move(tokens))
    , m_strokes(std::move(strokes))
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
    connect(&m_portal, &DesktopPortal::screenLocked, this, &PortalKeySender::screenLocked);
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
        m_untilNextLook = firstLookAgain;
        lookAtPortal(this);
        break;
    }
}

QCoro::Task<> PortalKeySender::lookAtPortal(QPointer<PortalKeySender> self)
{
    self->m_lookingAgain.reset();
    const quint32 portals = self->m_portals;
    const std::optional<quint32> version = co_await self->m_portal.version(interface);
    if (!self || self->m_portals != portals ||
        self->m_portal.state() != DesktopPortal::State::present) {
        co_return;
    }
    if (!version) {
        // The wish would be of another time when it does answer.
        self->m_isWanted = false;
        self->lookAgainLater();
        co_return;
    }
    self->m_version = *version;
    if (*version == 0) {
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

void PortalKeySender::lookAgainLater()
{
    m_lookingAgain =
        m_portal.clock().after(m_untilNextLook, [self = QPointer(this)] { lookAtPortal(self); });
    m_untilNextLook = std::min<Clock::Duration>(2 * m_untilNextLook, lastLookAgain);
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
        if (m_lookingAgain) {
            lookAtPortal(this);
        } else {
            resume();
        }
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
    auto made = co_await self->m_portal.createSession(interface);
    if (!self || !made.session) {
        co_return Ending::broken;
    }
    self->m_session = std::move(made.session);
    self->m_session->setClosed([sender = self.data()] { sender->closed(); });

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
    if (started.outcome == DesktopPortal::Outcome::cancelled) {
        co_return Ending::denied;
    }
    // What users say no by is the other one; desktops refuse also while the screen is locked.
    if (started.outcome != DesktopPortal::Outcome::granted) {
        co_return Ending::broken;
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

void PortalKeySender::closed()
{
    qCInfo(lcKeys, "The portal has ended the program's leave to press keys");
    if (m_isStarted) {
        m_justLost = m_portal.clock().after(lockLater, [this] { m_justLost.reset(); });
    }
    drop();
}

void PortalKeySender::screenLocked(bool isLocked)
{
    if (isLocked) {
        m_unlocking.reset();
        m_isLostByLock = m_isLostByLock || isAllowed() || m_justLost;
    } else if (std::exchange(m_isLostByLock, false)) {
        m_unlocking = m_portal.clock().after(unlocking, [this] { resume(); });
    }
}

QCoro::Task<bool> PortalKeySender::ready()
{
    const QPointer self(this);
    bool isKnown = false;
    if (m_heldKeys.hotKeysUp) {
        const QFuture<bool> up = m_heldKeys.hotKeysUp();
        isKnown = !up.isFinished();
        const bool areUp = co_await up;
        if (!self || !areUp) {
            co_return false;
        }
    }
    if (self->m_heldKeys.hadModifiers()) {
        co_await delay(self->m_portal.clock(), modifiersLater);
    } else if (!isKnown) {
        co_await delay(self->m_portal.clock(), unknownModifiersLater);
    }
    if (!self) {
        co_return false;
    }
    const auto version = co_await self->m_portal.version(interface, responseTimeout);
    co_return version.has_value();
}

QCoro::Task<KeySender::Sending>
PortalKeySender::send(PasteChord chord, std::shared_ptr<const PasteTarget> target, IsThere isThere)
{
    const QPointer self(this);
    // No chord comes between the keys of another.
    const LoopAnswer<bool> sent(false);
    const QFuture<bool> before = std::exchange(m_sending, sent.future());
    co_await before;
    if (!self || !self->isAllowed()) {
        co_return Sending::failed;
    }
    std::optional<KeyStrokes> strokes = self->m_strokes(chord);
    if (!strokes) {
        co_return Sending::noKeys;
    }
    const QString session = self->m_session->path();
    const Sending sending =
        co_await press(self, std::move(*strokes), std::move(target), std::move(isThere));
    if (sending == Sending::failed && self && self->m_session &&
        self->m_session->path() == session) {
        // With the session goes what is still pressed, and what the portal has not got to.
        self->drop();
        self->resume();
    }
    co_return sending;
}

/// Whether the portal got to it.
QCoro::Task<bool> PortalKeySender::lift(QPointer<PortalKeySender> self)
{
    std::vector<QFuture<QDBusMessage>> answers;
    answers.reserve(modifiers.size());
    for (const quint32 modifier : modifiers) {
        answers.push_back(self->notify({.key = modifier, .isPress = false}));
    }
    bool isAnswered = true;
    for (const QFuture<QDBusMessage>& answer : answers) {
        // Where nothing is to be lifted, some portals say that this is an error.
        const QDBusMessage reply = co_await answer;
        isAnswered = isAnswered && !DesktopPortal::isSilence(reply);
    }
    co_return isAnswered;
}

QCoro::Task<KeySender::Sending> PortalKeySender::press(
    QPointer<PortalKeySender> self, KeyStrokes strokes, std::shared_ptr<const PasteTarget> target,
    IsThere isThere)
{
    const bool isLifted = co_await lift(self);
    if (!isLifted) {
        qCWarning(lcKeys, "The portal does not answer; no keys were sent");
        co_return Sending::failed;
    }
    // One after another: portals answer in threads, which overtake each other.
    KeyStrokes held;
    Sending sending = Sending::sent;
    while (!strokes.empty()) {
        const KeyStroke stroke = strokes.front();
        strokes.erase(strokes.begin());
        if (!self || !self->isAllowed()) {
            co_return Sending::failed;
        }
        const bool hasLeft = target && !target->isActive();
        if (stroke.isPress && (hasLeft || !isThere())) {
            // What is down already is let go, and that is all.
            sending = hasLeft ? Sending::notInFront : Sending::contentReplaced;
            strokes.assign(held.rbegin(), held.rend());
            continue;
        }
        const QFuture<QDBusMessage> answer = self->notify(stroke);
        const QDBusMessage reply = co_await answer;
        if (reply.type() != QDBusMessage::ReplyMessage) {
            qCWarning(lcKeys).noquote() << "Keys were not taken:" << reply.errorMessage();
            co_return Sending::failed;
        }
        if (stroke.isPress) {
            held.push_back({.key = stroke.key, .isPress = false});
        }
    }
    co_return sending;
}

QFuture<QDBusMessage> PortalKeySender::notify(KeyStroke stroke)
{
    return m_portal.call(
        interface, u"NotifyKeyboardKeycode"_s,
        {asObject(*m_session), QVariantMap(), static_cast<int>(stroke.key),
         stroke.isPress ? 1U : 0U},
        keyTimeout);
}

} // namespace tessly
