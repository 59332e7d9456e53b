#pragma once

#include "LoopClipboard.h"

#include <chrono>

namespace tessly {

/// How long other programs are waited for. Neither a server that is held by one of them nor a pause
/// of this program counts as waiting for the owner; the whole of a read includes the former.
struct X11ClipboardDeadlines
{
    /// The whole of the list of types, each time that it is asked for.
    std::chrono::milliseconds targets{1000};
    /// The next sign of life of an owner that delivers content.
    std::chrono::milliseconds stall{5000};
    /// The whole of one read.
    std::chrono::milliseconds read{30000};
    /// Taking the rest of what nobody wants any more.
    std::chrono::milliseconds drain{30000};
    /// The next sign of life of a program that takes what is offered here.
    std::chrono::milliseconds reader{30000};
    /// The content that another program keeps of an owner that has ended.
    std::chrono::milliseconds takeover = LoopClipboard::State::usualTakeover;
};

} // namespace tessly
