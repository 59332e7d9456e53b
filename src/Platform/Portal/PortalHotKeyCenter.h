#pragma once

#include "DesktopPortal.h"
#include "HotKeyCenter.h"
#include "PortalShortcut.h"
#include "RestoreTokenFile.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace tessly {

/// Hot keys by the portal (org.freedesktop.portal.GlobalShortcuts), which may ask the user for
/// leave, and through which the user may give them other keys.
///
/// Keys that are registered in one turn of the event loop are asked for together. Where there is no
/// such portal, registrations wait for one to come: nobody else holds the keys, and the log says
/// once that there are none. They wait as well where the user has refused them in an earlier run,
/// so that no start of the program brings the same question.
class PortalHotKeyCenter final : public QObject, public HotKeyCenter
{
public:
    /// What a key is called on the desktop. Its trigger is added.
    using Describe = std::function<PortalShortcut(KeyID)>;

    /// The keys as this desktop's portal takes them; none if it has no name for them.
    using Trigger = std::function<std::optional<QString>(quint32 keyCode, quint32 modifiers)>;

    struct Options
    {
        Trigger trigger = portalTrigger;
        /// Whether this desktop's portal describes the keys of all shortcuts that have some; others
        /// describe none.
        bool describesKeys = false;
        /// Whether this desktop's portal answers "other" also where the user refused.
        bool refusesByOther = false;
        /// Keeps from one run to the next that the user refused; null: nothing does.
        std::unique_ptr<RestoreTokenFile> refusal = nullptr;
    };

    /// `portal` and `clock` must outlive the center.
    PortalHotKeyCenter(DesktopPortal& portal, Clock& clock, Describe describe);
    PortalHotKeyCenter(DesktopPortal& portal, Clock& clock, Describe describe, Options options);
    ~PortalHotKeyCenter() override;

    /// Whether the portal is there and has hot keys.
    [[nodiscard]] bool hasPortal() const { return m_isAvailable; }
    /// Whether that is so, and neither the user nor the desktop has refused them or taken them
    /// back; once keys were asked for, whether the desktop has given at least one of them keys.
    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] Installation installHandler(Handler handler) override;
    Status removeHandler(Reference handler) override;
    void setMayAsk(bool mayAsk) override;
    void forgetRefusal() override;
    /// Refused by the user or the desktop: `unavailable`. Two keys with one name are one.
    [[nodiscard]] Registration registerKey(quint32 keyCode, quint32 modifiers, KeyID key) override;
    /// A key that has no answer yet gets `done`: it is as if the answer had come before.
    Status unregisterKey(Reference key) override;

    /// Answered true when the hot keys are up that were pressed last, and a moment later, as their
    /// modifiers are let go after them; false if they are held for longer than anyone waits. At
    /// once if none is down.
    [[nodiscard]] QFuture<bool> keysUp();

private:
    struct Key
    {
        KeyID key;
        PortalShortcut shortcut;
        /// Gone once given. If the key goes without one, it is `unavailable`.
        std::optional<LoopAnswer<Status>> answer;
    };

    /// What is known of the user's will before anything is asked.
    enum class Consent { unread, open, refused };

    static QCoro::Task<> readRefusal(QPointer<PortalHotKeyCenter> self);
    void portalChanged();
    static QCoro::Task<> lookAtPortal(QPointer<PortalHotKeyCenter> self);
    void tellLack();
    void bindLater();
    void bind();
    static QCoro::Task<> bindAll(QPointer<PortalHotKeyCenter> self, quint64 run);
    void settle();
    void end(DesktopPortal::Outcome outcome);
    void tryAgainLater(Clock::Callback what);
    void received(const QDBusMessage& signal);
    void learnKeys(const QVariant& shortcuts);
    void pressed(const QString& shortcut);
    void released(const QString& shortcut);
    void allUp();

    DesktopPortal& m_portal;
    Clock& m_clock;
    Describe m_describe;
    Options m_options;
    Consent m_consent;
    bool m_mayAsk = true;
    Handler m_handler;
    Reference m_handlerReference = 0;
    Reference m_nextReference = 1;
    std::map<Reference, Key> m_keys;
    bool m_isAvailable = false;
    /// Counts the portals that have come.
    quint32 m_portals = 0;
    std::unique_ptr<Clock::Timer> m_tryingAgain;
    Clock::Duration m_untilNextTry{};
    bool m_hasToldLack = false;
    bool m_hasToldRefusal = false;
    /// What was asked for last was refused, or has been taken back.
    bool m_isRefused = false;
    bool m_isBindScheduled = false;
    /// Counts what was asked for; an answer to anything but the last is of no interest.
    quint64 m_run = 0;
    std::unique_ptr<PortalSession> m_session;
    /// What the session was asked for.
    QList<PortalShortcut> m_asked;
    /// The ids of what it holds, and whether the desktop or the user has given them keys; none
    /// until it has answered.
    std::optional<std::map<QString, bool>> m_held;
    /// Shortcuts that are down, until it can be taken that they are not.
    std::map<QString, std::unique_ptr<Clock::Timer>> m_down;
    /// Runs from when the last one came up until its modifiers have, too.
    std::unique_ptr<Clock::Timer> m_settling;
    /// Who waits for that, each with a limit.
    std::vector<std::pair<LoopAnswer<bool>, std::unique_ptr<Clock::Timer>>> m_waiting;
};

} // namespace tessly
