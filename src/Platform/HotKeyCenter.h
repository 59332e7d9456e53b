#pragma once

#include <QCoroTask>
#include <QtGlobal>

#include <functional>

namespace tessly {

/// Key combinations that reach the program whichever application is in front. Main thread only.
///
/// Keys are named by virtual key codes, which stand for a place on the keyboard and not for what is
/// printed there: 18, 19, 20, 21, 23, 22, 26, 28, 25, 29 are the keys 1 to 0 of the ANSI layout's
/// upper row.
class HotKeyCenter
{
public:
    /// 0, or why something was not done.
    using Status = qint32;
    static constexpr Status done = 0;
    /// There is no desktop (any more) that could do it.
    static constexpr Status unavailable = -9868;
    /// The press is not the handler's business.
    static constexpr Status notHandled = -9874;
    /// The combination is held already, by another program or this one.
    static constexpr Status taken = -9878;
    /// The keyboard has no such key, or there is no such modifier.
    static constexpr Status invalid = -9879;

    // Modifiers, to be or-ed.
    static constexpr quint32 commandKey = 0x100;
    static constexpr quint32 shiftKey = 0x200;
    static constexpr quint32 optionKey = 0x800;
    static constexpr quint32 controlKey = 0x1000;

    /// What the program calls a key.
    struct KeyID
    {
        quint32 signature = 0;
        quint32 id = 0;

        bool operator==(const KeyID&) const = default;
    };

    /// A press as the desktop reports it.
    struct Press
    {
        /// Why `key` could not be read; `done` if it could.
        Status status = done;
        KeyID key;
    };

    /// Called on the main thread, from the event loop, once for each time a key goes down, however
    /// long it is held. Returns `done` if the press was taken care of.
    using Handler = std::function<Status(const Press&)>;

    /// Names a handler or a registered key here; 0 names none.
    using Reference = quint64;

    struct Installation
    {
        Status status = done;
        Reference handler = 0;
    };

    /// A key that was asked for. The reference is known before the answer, so that the key can be
    /// given up while the desktop still thinks about it.
    struct Registration
    {
        Reference key = 0;
        /// Awaited, since it comes from the desktop, which may take its time. The key is live once
        /// it is `done` and not before. Outlives the center: it ends as `unavailable` then.
        QCoro::Task<Status> status;
    };

    HotKeyCenter() = default;
    HotKeyCenter(const HotKeyCenter&) = delete;
    HotKeyCenter& operator=(const HotKeyCenter&) = delete;
    /// Gives up every key.
    virtual ~HotKeyCenter() = default;

    /// Whether this desktop has global keys at all.
    [[nodiscard]] virtual bool isAvailable() const = 0;

    [[nodiscard]] virtual Installation installHandler(Handler handler) = 0;
    virtual Status removeHandler(Reference handler) = 0;

    /// Asks for a combination. Questions are answered, and keys given up, in the order of the
    /// calls.
    [[nodiscard]] virtual Registration
    registerKey(quint32 keyCode, quint32 modifiers, KeyID key) = 0;
    /// Whether the desktop may question the user now; it may at first. Keys that it would ask for
    /// wait meanwhile.
    virtual void setMayAsk(bool) {}
    /// The user has just asked for keys: the desktop may question, and a refusal that is remembered
    /// from before counts no longer.
    virtual void forgetRefusal() {}
    /// Gives a key up, also one whose registration has not been answered.
    virtual Status unregisterKey(Reference key) = 0;
};

} // namespace tessly
