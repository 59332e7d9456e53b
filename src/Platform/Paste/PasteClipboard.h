#pragma once

#include "LoopPasteboard.h"

#include <QCoroTask>

#include <functional>

namespace tessly {

/// What those who press paste keys ask of the clipboard. Keys and content go to the desktop over
/// connections of their own, which it serves in any order.
struct PasteClipboard
{
    /// As those of LoopPasteboard, which must outlive what is returned.
    [[nodiscard]] static PasteClipboard of(LoopPasteboard& pasteboard)
    {
        return {
            .holds = [&pasteboard](WriteTicket ticket) { return pasteboard.holds(ticket); },
            .isText = [&pasteboard](WriteTicket ticket) { return pasteboard.isText(ticket); },
            .offerAsPrimary =
                [&pasteboard](WriteTicket ticket) { return pasteboard.offerAsPrimary(ticket); },
            .begin =
                [&pasteboard](WriteTicket ticket, bool isPrimaryPasted) {
                    return pasteboard.beginPaste(ticket, isPrimaryPasted);
                }};
    }

    /// Whether what was written with this ticket is there to be pasted.
    std::function<QCoro::Task<bool>(WriteTicket)> holds = {};
    /// Whether it is text and neither an image nor files.
    std::function<bool(WriteTicket)> isText = {};
    /// Offers it as PRIMARY too, for what pastes only that; false if it cannot be done.
    std::function<QCoro::Task<bool>(WriteTicket)> offerAsPrimary = {};
    /// Last thing before the keys: whether it is still there, as PRIMARY too if that is what they
    /// paste, as far as has been heard. Any thread.
    std::function<bool(WriteTicket, bool isPrimaryPasted)> begin = {};
};

} // namespace tessly
