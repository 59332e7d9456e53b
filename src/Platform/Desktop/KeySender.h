#pragma once

#include "PasteChord.h"

#include <QCoroTask>

namespace tessly {

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

    /// Waits until the user has let go of keys that would spoil a chord and that `send` cannot lift
    /// here; not for long, and only as far as the desktop tells of them.
    [[nodiscard]] virtual QCoro::Task<> keysUp() { co_return; }

    /// Presses and releases the keys of a chord so that nothing else is seen of them, whatever the
    /// user holds down. True once the desktop has all of them; false if it took none, or not all.
    [[nodiscard]] virtual QCoro::Task<bool> send(PasteChord chord) = 0;
};

} // namespace tessly
