#include "PortalHotKeyCenter.h"

#include <QCoroFuture>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QLoggingCategory>
#include <QStringList>

#include <algorithm>
#include <chrono>
#include <ranges>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcHotKeys, "com.brackmoor.tessly.PortalHotKeyCenter")

const QString interface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString activated = u"Activated"_s;
const QString deactivated = u"Deactivated"_s;
const QString shortcutsChanged = u"ShortcutsChanged"_s;

/// Some desktops tell of a held key again and again, and not all tell of its release: a key that
/// was not heard of for longer than keyboards take to repeat has been let go.
constexpr auto longestSilence = 1s;

/// How much later than a key its modifiers may be let go.
constexpr auto modifiersLater = 250ms;
/// How long anyone waits for keys to be let go.
constexpr auto longestHold = 1s + modifiersLater;

/// In seconds: who refuses faster is a portal, not a person. GNOME answers "other" for both.
constexpr double shortestThought = 1;

/// Between tries with a portal that does not answer; then twice as long each time.
constexpr auto firstTryAgain = 30s;
constexpr auto lastTryAgain = 10min;

using Status = HotKeyCenter::Status;

QCoro::Task<Status> answered(QFuture<Status> answer)
{
    co_return co_await answer;
}

/// The shortcuts that an answer or a signal lists.
QList<PortalShortcut> shortcutsIn(const QVariant& list)
{
    const auto argument = list.value<QDBusArgument>();
    return argument.currentSignature() == "a(sa{sv})"_L1
               ? qdbus_cast<QList<PortalShortcut>>(argument)
               : QList<PortalShortcut>();
}

/// There is nothing to describe to people where the keys are another program's, or the user took
/// them away; a description that lacks says nothing.
bool describesNone(const PortalShortcut& shortcut)
{
    const QVariant keys = shortcut.properties.value(u"trigger_description"_s);
    return keys.isValid() && keys.toString().isEmpty();
}

} // namespace

PortalHotKeyCenter::PortalHotKeyCenter(DesktopPortal& portal, Clock& clock, Describe describe)
    : PortalHotKeyCenter(portal, clock, std::move(describe), Options())
{
}

PortalHotKeyCenter::PortalHotKeyCenter(
    DesktopPortal& portal, Clock& clock, Describe describe, Options options)
    : m_portal(portal)
    , m_clock(clock)
    , m_describe(std::move(describe))
    , m_options(std::move(options))
    , m_consent(m_options.refusal ? Consent::unread : Consent::open)
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    connect(&m_portal, &DesktopPortal::received, this, &PortalHotKeyCenter::received);
    m_portal.listen(interface, activated);
    m_portal.listen(interface, deactivated);
    m_portal.listen(interface, shortcutsChanged);
    connect(&m_portal, &DesktopPortal::stateChanged, this, &PortalHotKeyCenter::portalChanged);
    portalChanged();
    if (m_options.refusal) {
        readRefusal(this);
    }
}

PortalHotKeyCenter::~PortalHotKeyCenter() = default;

bool PortalHotKeyCenter::isAvailable() const
{
    if (!m_isAvailable || m_isRefused) {
        return false;
    }
    return m_keys.empty() ||
           (m_held && std::ranges::any_of(*m_held, &std::pair<const QString, bool>::second));
}

QCoro::Task<> PortalHotKeyCenter::readRefusal(QPointer<PortalHotKeyCenter> self)
{
    const QFuture<QString> read = self->m_options.refusal->read();
    const QString text = co_await read;
    if (self && self->m_consent == Consent::unread) {
        self->m_consent = text.isEmpty() ? Consent::open : Consent::refused;
        self->bind();
    }
}

void PortalHotKeyCenter::setMayAsk(bool mayAsk)
{
    m_mayAsk = mayAsk;
    bindLater();
}

void PortalHotKeyCenter::forgetRefusal()
{
    setMayAsk(true);
    if (m_consent == Consent::open) {
        return;
    }
    m_consent = Consent::open;
    m_isRefused = false;
    m_options.refusal->write({});
    bindLater();
}

void PortalHotKeyCenter::portalChanged()
{
    m_isAvailable = false;
    m_isRefused = false;
    m_tryingAgain.reset();
    // With a portal goes what it held.
    m_session.reset();
    m_held.reset();
    allUp();
    switch (m_portal.state()) {
    case DesktopPortal::State::undecided:
        break;
    case DesktopPortal::State::absent:
        tellLack();
        break;
    case DesktopPortal::State::present:
        ++m_portals;
        m_untilNextTry = firstTryAgain;
        lookAtPortal(this);
        break;
    }
}

QCoro::Task<> PortalHotKeyCenter::lookAtPortal(QPointer<PortalHotKeyCenter> self)
{
    const quint32 portals = self->m_portals;
    const std::optional<quint32> version = co_await self->m_portal.version(interface);
    if (!self || self->m_portals != portals ||
        self->m_portal.state() != DesktopPortal::State::present) {
        co_return;
    }
    if (!version) {
        self->tryAgainLater([self] { lookAtPortal(self); });
        co_return;
    }
    if (*version == 0) {
        self->tellLack();
        co_return;
    }
    self->m_isAvailable = true;
    self->bind();
}

void PortalHotKeyCenter::tellLack()
{
    if (!std::exchange(m_hasToldLack, true)) {
        qCInfo(
            lcHotKeys, "This desktop has no portal for hot keys; none are held. "
                       "Commands like \"tessly paste 3\" can be given keys in its own settings.");
    }
}

HotKeyCenter::Installation PortalHotKeyCenter::installHandler(Handler handler)
{
    if (m_handler) {
        return {.status = taken};
    }
    m_handler = std::move(handler);
    m_handlerReference = m_nextReference++;
    return {.status = done, .handler = m_handlerReference};
}

Status PortalHotKeyCenter::removeHandler(Reference handler)
{
    if (!m_handler || handler != m_handlerReference) {
        return invalid;
    }
    m_handler = nullptr;
    return done;
}

HotKeyCenter::Registration
PortalHotKeyCenter::registerKey(quint32 keyCode, quint32 modifiers, KeyID key)
{
    const Reference reference = m_nextReference++;
    const LoopAnswer<Status> answer(unavailable);
    Registration registration = {.key = reference, .status = answered(answer.future())};
    const auto trigger = m_options.trigger(keyCode, modifiers);
    if (!trigger) {
        answer(invalid);
        return registration;
    }
    PortalShortcut shortcut = m_describe(key);
    shortcut.properties.insert(u"preferred_trigger"_s, *trigger);
    const bool isOwn = std::ranges::any_of(m_keys | std::views::values, [&](const Key& other) {
        return other.shortcut.id == shortcut.id ||
               other.shortcut.properties.value(u"preferred_trigger"_s) == *trigger;
    });
    if (isOwn) {
        answer(taken);
        return registration;
    }
    m_keys.emplace(reference, Key{.key = key, .shortcut = std::move(shortcut), .answer = answer});
    bindLater();
    return registration;
}

Status PortalHotKeyCenter::unregisterKey(Reference key)
{
    const auto known = m_keys.extract(key);
    if (!known) {
        return invalid;
    }
    if (const auto answer = known.mapped().answer) {
        // Nothing was wrong with it; it is given up, as it would be after the answer.
        (*answer)(done);
    }
    bindLater();
    return done;
}

void PortalHotKeyCenter::bindLater()
{
    if (!std::exchange(m_isBindScheduled, true)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_isBindScheduled = false;
                bind();
            },
            Qt::QueuedConnection);
    }
}

/// Has the portal hold the keys that are registered, and no others.
void PortalHotKeyCenter::bind()
{
    if (!m_isAvailable || m_consent == Consent::unread) {
        return;
    }
    if (m_consent == Consent::refused) {
        if (!m_keys.empty() && !std::exchange(m_hasToldRefusal, true)) {
            qCInfo(
                lcHotKeys, "Hot keys were refused before; they are asked for again once they are "
                           "switched on in the settings");
        }
        m_isRefused = true;
        return;
    }
    QList<PortalShortcut> wanted;
    for (const Key& key : m_keys | std::views::values) {
        wanted << key.shortcut;
    }
    std::ranges::sort(wanted, {}, &PortalShortcut::id);
    if (m_session && wanted == m_asked) {
        settle();
        return;
    }
    ++m_run;
    m_tryingAgain.reset();
    m_session.reset();
    m_held.reset();
    allUp();
    m_asked = std::move(wanted);
    if (!m_asked.isEmpty() && m_mayAsk) {
        bindAll(this, m_run);
    }
}

QCoro::Task<> PortalHotKeyCenter::bindAll(QPointer<PortalHotKeyCenter> self, quint64 run)
{
    // A session's shortcuts are bound once: others need another session.
    auto made = co_await self->m_portal.createSession(interface);
    if (!self || self->m_run != run || !self->m_isAvailable) {
        co_return;
    }
    if (!made.session) {
        self->end(made.outcome);
        co_return;
    }
    self->m_session = std::move(made.session);
    self->m_session->setClosed([center = self.data()] {
        qCInfo(lcHotKeys, "The desktop holds the hot keys no longer");
        center->m_isRefused = true;
        center->m_session.reset();
        center->m_held.reset();
    });
    const double asked = self->m_clock.now();
    const QFuture<DesktopPortal::Response> answer = self->m_portal.request(
        interface, u"BindShortcuts"_s,
        {QVariant::fromValue(QDBusObjectPath(self->m_session->path())),
         QVariant::fromValue(self->m_asked), QString()},
        {}, DesktopPortal::Asks::theUser);
    const auto response = co_await answer;
    if (!self || self->m_run != run || !self->m_isAvailable) {
        co_return;
    }
    // The portal of GNOME 48 answers "other" when the user has agreed, with what it holds.
    const bool isGranted = response.outcome == DesktopPortal::Outcome::granted ||
                           (response.outcome == DesktopPortal::Outcome::refused &&
                            !shortcutsIn(response.results.value(u"shortcuts"_s)).isEmpty());
    if (!self->m_session) {
        // One that has been ended meanwhile was not meant to hold them.
        self->end(DesktopPortal::Outcome::refused);
        co_return;
    }
    if (!isGranted) {
        const bool isByUser = self->m_options.refusesByOther &&
                              response.outcome == DesktopPortal::Outcome::refused &&
                              self->m_clock.now() - asked >= shortestThought;
        self->end(isByUser ? DesktopPortal::Outcome::cancelled : response.outcome);
        co_return;
    }
    self->m_untilNextTry = firstTryAgain;
    self->m_isRefused = false;
    self->m_held.emplace();
    self->learnKeys(response.results.value(u"shortcuts"_s));
    self->settle();
}

/// Of all that the session holds, or of some of it.
void PortalHotKeyCenter::learnKeys(const QVariant& shortcuts)
{
    QStringList withoutKeys;
    for (const PortalShortcut& shortcut : shortcutsIn(shortcuts)) {
        const bool hasKeys = !m_options.describesKeys || !describesNone(shortcut);
        m_held->insert_or_assign(shortcut.id, hasKeys);
        if (!hasKeys) {
            withoutKeys << shortcut.id;
        }
    }
    if (!withoutKeys.isEmpty()) {
        // They stay ours: the user can give them keys in the desktop's settings at any time.
        qCWarning(lcHotKeys).noquote()
            << "The desktop has given no keys to" << withoutKeys.join(u", "_s);
    }
}

/// Answers by what the session holds, once that is known.
void PortalHotKeyCenter::settle()
{
    if (!m_held) {
        return;
    }
    for (auto entry = m_keys.begin(); entry != m_keys.end();) {
        Key& key = entry->second;
        const bool isHeld = m_held->contains(key.shortcut.id);
        if (const auto answer = std::exchange(key.answer, std::nullopt)) {
            (*answer)(isHeld ? done : taken);
        } else if (!isHeld) {
            qCWarning(lcHotKeys).noquote() << "No longer held:" << key.shortcut.id;
        }
        entry = isHeld ? std::next(entry) : m_keys.erase(entry);
    }
}

/// The portal holds nothing: it was told not to, or does not want to, or does not answer.
void PortalHotKeyCenter::end(DesktopPortal::Outcome outcome)
{
    if (outcome == DesktopPortal::Outcome::failed) {
        m_session.reset();
        m_asked.clear();
        tryAgainLater([this] { bind(); });
        return;
    }
    if (outcome == DesktopPortal::Outcome::cancelled && m_options.refusal) {
        m_consent = Consent::refused;
        m_options.refusal->write(u"refused"_s);
    }
    if (!std::exchange(m_hasToldRefusal, true)) {
        qCWarning(lcHotKeys, "The desktop gave no leave for hot keys; none are held");
    }
    m_isRefused = true;
    m_session.reset();
    m_asked.clear();
    // Those that have no answer yet get theirs by going.
    m_keys.clear();
}

void PortalHotKeyCenter::received(const QDBusMessage& signal)
{
    const QVariantList arguments = signal.arguments();
    const bool isOurs = signal.interface() == interface && m_session && m_held &&
                        arguments.value(0).value<QDBusObjectPath>().path() == m_session->path();
    if (!isOurs) {
        return;
    }
    if (signal.member() == shortcutsChanged) {
        learnKeys(arguments.value(1));
        return;
    }
    const QString shortcut = arguments.value(1).toString();
    if (signal.member() == activated) {
        pressed(shortcut);
    } else {
        released(shortcut);
    }
}

void PortalHotKeyCenter::pressed(const QString& shortcut)
{
    m_settling.reset();
    auto& down = m_down[shortcut];
    const bool isRepeat = down != nullptr;
    down = m_clock.after(longestSilence, [this, shortcut] { released(shortcut); });
    const auto key = std::ranges::find_if(
        m_keys, [&](const auto& entry) { return entry.second.shortcut.id == shortcut; });
    if (isRepeat || key == m_keys.end() || !m_handler) {
        return;
    }
    // A copy: what is done about the press may remove the handler.
    const Handler handler = m_handler;
    handler({.status = done, .key = key->second.key});
}

void PortalHotKeyCenter::tryAgainLater(Clock::Callback what)
{
    m_tryingAgain = m_clock.after(m_untilNextTry, std::move(what));
    m_untilNextTry = std::min<Clock::Duration>(2 * m_untilNextTry, lastTryAgain);
}

/// Of keys that are held no longer nothing is heard.
void PortalHotKeyCenter::allUp()
{
    m_down.clear();
    m_settling.reset();
    for (const auto& [answer, limit] : std::exchange(m_waiting, {})) {
        answer(true);
    }
}

void PortalHotKeyCenter::released(const QString& shortcut)
{
    if (m_down.erase(shortcut) == 0 || !m_down.empty()) {
        return;
    }
    m_settling = m_clock.after(modifiersLater, [this] { allUp(); });
}

QFuture<bool> PortalHotKeyCenter::keysUp()
{
    const LoopAnswer<bool> answer(false);
    if (m_down.empty() && !m_settling) {
        answer(true);
    } else {
        m_waiting.emplace_back(answer, m_clock.after(longestHold, [answer] { answer(false); }));
    }
    return answer.future();
}

} // namespace tessly
