#pragma once

#include "BusPeer.h"
#include "Clock.h"
#include "FrontHistory.h"
#include "LoopAnswer.h"
#include "ShellPlace.h"
#include "ShellWindow.h"

#include <QCoroTask>
#include <QDBusMessage>
#include <QFuture>
#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <map>
#include <memory>
#include <optional>

namespace tessly {

/// The program's own extension of GNOME Shell, where the user has enabled it: tells which window is
/// in front and where the pointer is, over the session bus. Main thread only, but for the history;
/// nothing waits for the bus or the shell.
///
/// It comes and goes at any time: GNOME has no extensions while the screen is locked. One that does
/// not answer counts as it was last.
class ShellExtension final : public QObject
{
    Q_OBJECT

public:
    using Connect = BusPeer::Connect;
    using Window = std::shared_ptr<const ShellWindow>;
    using History = FrontHistory<ShellWindow>;

    struct Front
    {
        /// None when nothing is in front.
        Window window = {};
        /// Whether keys go to it, and not to the shell itself.
        bool hasKeyboard = false;

        bool operator==(const Front&) const = default;
    };

    /// How long the extension has to tell what is in front. After it has let that pass it is not
    /// waited for again before it is heard of.
    static constexpr std::chrono::seconds timeout{1};
    /// The same for the pointer's place: the panel is waiting to be shown.
    static constexpr std::chrono::milliseconds placeTimeout{250};

    /// `connect` opens the connection to the session bus, on a thread of its own. `clock` must
    /// outlive this.
    ShellExtension(Connect connect, Clock& clock, QObject* parent = nullptr);
    ~ShellExtension() override;

    /// Whether it is there and tells what is in front.
    [[nodiscard]] bool isPresent() const { return m_isPresent; }
    /// Nothing is in front while it is not there.
    [[nodiscard]] const Front& front() const { return m_front; }
    /// What was in front before that. Outlives this.
    [[nodiscard]] const std::shared_ptr<History>& history() const { return m_history; }

    /// Finished once it is known what was in front by now, or that there is nobody to tell it.
    [[nodiscard]] QCoro::Task<> catchUp();
    /// Asks that this window come to the front.
    void activate(const ShellWindow& window);
    /// None if it is not there or does not answer.
    [[nodiscard]] QCoro::Task<std::optional<ShellPlace>> place();

Q_SIGNALS:
    /// Another window has come to the front or none is any more, also because the extension came or
    /// went.
    void frontChanged();

private:
    void ownerChanged();
    void heard(const QDBusMessage& signal);
    QFuture<QDBusMessage> askForFront();
    void frontTold(const QDBusMessage& message);
    void setFront(const Front& front);
    void windowClosed(quint64 id);

    BusPeer m_peer;
    bool m_isPresent = false;
    /// It let its time pass and has not been heard of since.
    bool m_isSilent = false;
    /// What it told was no window, and the log has it.
    bool m_hasToldNonsense = false;
    /// It was asked to bring a window to the front, and has not answered.
    bool m_isActivating = false;
    /// Answered once it is known whether it is there, or not known in time.
    LoopAnswer<bool> m_decided{false};
    std::unique_ptr<Clock::Timer> m_deciding;
    std::map<quint64, std::shared_ptr<ShellWindow>> m_windows;
    Front m_front;
    const std::shared_ptr<History> m_history = std::make_shared<History>();
};

} // namespace tessly
