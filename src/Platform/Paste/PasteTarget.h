#pragma once

#include "PasteChord.h"
#include "RunningApplication.h"

namespace tessly {

/// An application with what has to be known to paste into it.
class PasteTarget : public RunningApplication
{
public:
    /// The keys by which it pastes. A read of memory.
    [[nodiscard]] virtual PasteChord pasteChord() const = 0;
    /// The same for what is text and neither an image nor files.
    [[nodiscard]] virtual PasteChord textPasteChord() const { return pasteChord(); }
};

} // namespace tessly
