#pragma once

#include "DesktopPortal.h"
#include "KeySender.h"
#include "KeyStroke.h"
#include "RestoreTokenFile.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

namespace tessly {

/// Presses keys through the portal (org.freedesktop.portal.RemoteDesktop), which asks the user for
/// leave once; what it gives to remember that by makes later starts silent. GNOME ends the session
/// whenever the screen is locked; it is begun anew when the user is back.
///
/// Keys that the user holds down are released first. Compositors differ in what they make of that:
/// some do not let go of a key that another keyboard holds, and nobody else can there.
class PortalKeySender final : public QObject, public KeySender
{
public:
    /// What is known of the keys that the user holds down.
    struct HeldKeys
    {
        /// Answered when the hot key that may have led to a paste is up.
        std::function<QFuture<bool>()> hotKeysUp = {};
        /// Whether modifiers were down when the program last had the keyboard, and may be still.
        std::function<bool()> hadModifiers = {};
    };

    /// The strokes that make a chord on the keyboard in use, whatever layout is in effect; none if
    /// there are no such. A read of memory.
    using Strokes = std::function<std::optional<KeyStrokes>(PasteChord)>;

    /// `portal` must outlive this. If a token is kept in `tokens`, access is taken up again at once
    /// and without asking, as far as it is the program's to say; otherwise nothing is asked until
    /// access is requested.
    PortalKeySender(
        DesktopPortal& portal, std::unique_ptr<RestoreTokenFile> tokens, Strokes strokes);
    ~PortalKeySender() override;

    /// Whether the portal is there and lets programs press keys, if the user does.
    [[nodiscard]] bool isAvailable() const { return m_support == Support::there; }

    [[nodiscard]] bool isAllowed() const override { return m_session && m_isStarted; }
    /// Always true, also where there is no portal to ask. A user who has said no is not asked
    /// again.
    [[nodiscard]] bool requestAccess() override;
    /// As `requestAccess`, at the user's explicit wish: also one who has said no is asked. False if
    /// there is nobody to ask.
    [[nodiscard]] bool askAgain();

    /// What the toolkit knows of modifiers is asked where `hadModifiers` is missing.
    void setHeldKeys(HeldKeys heldKeys);

    /// Waits a moment also where nothing is known of held keys: a key of the desktop's own may have
    /// started a command. False as well if the portal is not there to take keys at once: it would
    /// press them later, whatever is in front then.
    [[nodiscard]] QCoro::Task<bool> ready() override;
    /// Fails as well where a key has not been taken within a few seconds.
    [[nodiscard]] QCoro::Task<Sending>
    send(PasteChord chord, std::shared_ptr<const PasteTarget> target, IsThere isThere) override;

private:
    enum class Support { unknown, lacking, there };
    enum class Reason { tokenKept, requested };
    /// How far asking for access got.
    enum class Ending {
        started,
        /// The user said no, or gave leave for something else.
        denied,
        /// What was kept to be remembered by is good for nothing.
        tokenRefused,
        /// Nothing came of it: the portal went away or hangs, or the desktop allows nothing now.
        broken,
    };

    void portalChanged();
    static QCoro::Task<> lookAtPortal(QPointer<PortalKeySender> self);
    static QCoro::Task<> begin(QPointer<PortalKeySender> self, Reason reason);
    static QCoro::Task<Ending> start(QPointer<PortalKeySender> self);
    static QCoro::Task<Sending> press(
        QPointer<PortalKeySender> self, KeyStrokes strokes,
        std::shared_ptr<const PasteTarget> target, IsThere isThere);
    static QCoro::Task<bool> lift(QPointer<PortalKeySender> self);
    [[nodiscard]] QFuture<QDBusMessage> notify(KeyStroke stroke);
    void screenLocked(bool isLocked);
    void closed();
    void lookAgainLater();
    void resume();
    void keepToken(const QString& token);
    void drop();

    DesktopPortal& m_portal;
    std::unique_ptr<RestoreTokenFile> m_tokens;
    Strokes m_strokes;
    HeldKeys m_heldKeys;
    Support m_support = Support::unknown;
    quint32 m_version = 0;
    /// Counts the portals that have come.
    quint32 m_portals = 0;
    /// None before the file has been read; empty for none.
    std::optional<QString> m_token;
    std::unique_ptr<PortalSession> m_session;
    bool m_isStarted = false;
    bool m_isBeginning = false;
    bool m_isDenied = false;
    /// Access was requested when it was not known yet whether there is anybody to ask.
    bool m_isWanted = false;
    /// Until the portal is asked once more what it has; it gave no answer.
    std::unique_ptr<Clock::Timer> m_lookingAgain;
    Clock::Duration m_untilNextLook{};
    /// Runs for a while after the session was lost, for a reason that may follow.
    std::unique_ptr<Clock::Timer> m_justLost;
    /// Whether access went when the screen was locked, and is to come back with the user.
    bool m_isLostByLock = false;
    /// Runs from when the screen is unlocked until the desktop lets programs press keys again.
    std::unique_ptr<Clock::Timer> m_unlocking;
    /// How often in a row a silent start came to nothing.
    int m_brokenStarts = 0;
    bool m_hasToldLack = false;
    /// Finished when the chord that was sent last is done with.
    QFuture<bool> m_sending = LoopAnswer<bool>(false).future();
};

} // namespace tessly
