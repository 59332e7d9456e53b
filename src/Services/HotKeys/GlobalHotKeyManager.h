#pragma once

#include "HotKeyCenter.h"

#include <QCoroTask>
#include <QObject>

#include <functional>
#include <map>
#include <set>

namespace tessly {

/// Runs an action when a key combination is pressed, whichever application is in front. Main thread
/// only.
///
/// The caller registers its whole set anew after every change: all off, then each key again, whose
/// ids begin at 1 each time. Releasing the manager unregisters nothing by itself.
class GlobalHotKeyManager final : public QObject
{
public:
    struct Shortcut
    {
        /// A virtual key code, as HotKeyCenter takes it.
        quint32 keyCode = 0;
        /// HotKeyCenter's modifiers, or-ed.
        quint32 modifiers = 0;

        bool operator==(const Shortcut&) const = default;
    };

    using Action = std::function<void()>;

    /// `center` must outlive the manager.
    explicit GlobalHotKeyManager(HotKeyCenter& center, QObject* parent = nullptr);
    ~GlobalHotKeyManager() override;

    /// True once the key is live. The id is spent and the desktop asked within the call; only the
    /// desktop's answer is awaited. Keys may therefore be registered in one go, and their answers
    /// collected afterwards. False also if all keys were unregistered before the answer came.
    [[nodiscard]] QCoro::Task<bool> registerShortcut(Shortcut shortcut, Action action);

    /// Gives up every key and forgets every action. The event handler stays.
    void unregisterAll();

    /// Removes the event handler, at the program's end. The next registration installs it again.
    void removeEventHandler();

private:
    [[nodiscard]] bool installEventHandlerIfNeeded();
    void performAction(quint32 id);

    HotKeyCenter& m_center;
    HotKeyCenter::Reference m_eventHandler = 0;
    std::map<quint32, HotKeyCenter::Reference> m_references;
    std::map<quint32, Action> m_actions;
    quint32 m_nextID = 1;
    /// Keys that were asked for and not yet answered.
    std::set<HotKeyCenter::Reference> m_pending;
};

} // namespace tessly
