#pragma once

#include <QString>

#include <functional>

namespace tessly {

/// How an action of the user's ended, for callers who do not see the banner that tells of it.
struct ActionOutcome
{
    enum class Case {
        done,
        /// A paste: the clip is on the pasteboard, but no application was there to take it.
        copiedOnly,
        /// A paste: the desktop does not let the program press keys.
        needsAccess,
        /// The clip could not be put on the pasteboard, or the keys could not be made.
        notRestored,
        /// The history has no entry at this position.
        noSuchPosition,
        storeFailed,
    };
    Case resultCase = Case::done;
    /// A sentence about what went wrong; empty if nothing did.
    QString message = {};

    bool operator==(const ActionOutcome&) const = default;
};

/// Told once how an action ended, on the main thread; never if what acts goes away before. May be
/// empty.
using ActionCompletion = std::function<void(const ActionOutcome&)>;

} // namespace tessly
