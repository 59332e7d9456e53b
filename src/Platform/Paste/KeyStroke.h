#pragma once

#include <QtGlobal>

#include <vector>

namespace tessly {

/// A key that goes down or up.
struct KeyStroke
{
    /// As in linux/input-event-codes.h.
    quint32 key = 0;
    bool isPress = false;

    bool operator==(const KeyStroke&) const = default;
};

using KeyStrokes = std::vector<KeyStroke>;

} // namespace tessly
