#pragma once

#include "LoopClipboard.h"

#include <chrono>

namespace tessly {

/// How long others are waited for. What is offered needs no waiting: it is told with each content.
struct WaylandClipboardDeadlines
{
    /// The compositor, when the connection is made.
    std::chrono::milliseconds connection{5000};
    /// The next sign of life of an owner that delivers content.
    std::chrono::milliseconds stall{5000};
    /// The whole of one read.
    std::chrono::milliseconds read{30000};
    /// Taking the rest of what nobody wants any more.
    std::chrono::milliseconds drain{30000};
    /// The next sign of life of a program that takes what is offered here.
    std::chrono::milliseconds reader{30000};
    /// The end of the source of content that has gone: its windows are told of on another
    /// connection, sooner or later than its content.
    std::chrono::milliseconds sourceEnd{500};
    /// The end of an owner that serves one read and no more. Who leaves later after it was read has
    /// other reasons.
    std::chrono::milliseconds usedUp{1000};
    /// The content that another program keeps of an owner that has ended.
    std::chrono::milliseconds takeover = LoopClipboard::State::usualTakeover;
};

} // namespace tessly
