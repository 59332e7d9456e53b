#pragma once

#include <QCoroTask>

#include <functional>

namespace tessly {

/// What those who press paste keys ask of the clipboard. Keys and content go to the desktop over
/// connections of their own, which it serves in any order.
struct PasteClipboard
{
    /// True once what was written last is there to be pasted.
    std::function<QCoro::Task<bool>()> hasWritten = {};
    /// Offers it as PRIMARY too, for what pastes only that; false if it cannot be done.
    std::function<QCoro::Task<bool>()> offerAsPrimary = {};
};

} // namespace tessly
