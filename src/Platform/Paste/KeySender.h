#pragma once

#include "PasteChord.h"

#include <QCoroTask>

#include <functional>
#include <memory>

namespace tessly {

class PasteTarget;

/// A way in which a desktop lets a program press keys; they go to whatever has the keyboard. Main
/// thread only; nothing here waits.
class KeySender
{
public:
    KeySender() = default;
    KeySender(const KeySender&) = delete;
    KeySender& operator=(const KeySender&) = delete;
    virtual ~KeySender() = default;

    /// Whether the desktop lets the program press keys now. Does not ask the user.
    [[nodiscard]] virtual bool isAllowed() const = 0;
    /// Asks the desktop for that, which may ask the user. False if the user is to grant it first
    /// and then try again, in which case nothing is to be done now; otherwise `isAllowed` tells,
    /// now or later, what came of it. A question that is open already is not asked again.
    [[nodiscard]] virtual bool requestAccess() = 0;

    /// Waits, not for long, until the user has let go of keys that would spoil a chord and that
    /// `send` cannot lift, as far as the desktop tells of them, and until the desktop can be
    /// expected to take keys at once. False if it did not come to that: nothing is to be sent.
    [[nodiscard]] virtual QCoro::Task<bool> ready() { co_return true; }

    enum class Sending {
        /// The desktop has all of the keys.
        sent,
        /// The keyboard has no keys for this chord that mean the same whatever layout is in effect.
        noKeys,
        /// The desktop tells that the target is not in front any more; it took none.
        notInFront,
        /// There is something else to paste by now; it took none.
        contentReplaced,
        /// It took none, or not all.
        failed,
    };
    /// Whether what is to be pasted is still there. Any thread; does not wait.
    using IsThere = std::function<bool()>;

    /// Presses and releases the keys of a chord so that nothing else is seen of them, whatever the
    /// user holds down. They are meant for `target`, and for what `isThere` tells of, which is
    /// asked last thing before.
    [[nodiscard]] virtual QCoro::Task<Sending>
    send(PasteChord chord, std::shared_ptr<const PasteTarget> target, IsThere isThere) = 0;
};

} // namespace tessly
