#pragma once

#include "Pasteboard.h"
#include "RunningApplication.h"

#include <QCoroTask>

#include <memory>

namespace tessly {

/// How posting the paste keys ended.
enum class PostResult {
    posted,
    /// The target was not in front when the keys were due; none were sent.
    targetNotInFront,
    /// Something else was on the pasteboard when the keys were due; none were sent.
    contentReplaced,
    /// The keys cannot be made here: no such key, no such facility, the desktop went away, or it
    /// did not take what was to be pasted.
    failed,
};

/// Presses keys in other applications. Main thread only; waiting for the user to let go of held
/// modifiers happens elsewhere.
class KeyEventPoster
{
public:
    KeyEventPoster() = default;
    KeyEventPoster(const KeyEventPoster&) = delete;
    KeyEventPoster& operator=(const KeyEventPoster&) = delete;
    virtual ~KeyEventPoster() = default;

    /// Whether the desktop lets the program post keys now. Does not ask the user.
    [[nodiscard]] virtual bool isAllowed() const = 0;
    /// Asks the desktop for that, which may ask the user. False if the user is to grant it first
    /// and then try again, in which case nothing is to be done now; otherwise `isAllowed` tells,
    /// now or later, what came of it.
    [[nodiscard]] virtual bool requestAccess() = 0;

    /// Presses and releases the keys by which `target` pastes what was written with this ticket,
    /// and nothing else, whatever the user holds down.
    [[nodiscard]] virtual QCoro::Task<PostResult>
    postPaste(std::shared_ptr<RunningApplication> target, WriteTicket content) = 0;
};

} // namespace tessly
