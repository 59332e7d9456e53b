#pragma once

#include "Pasteboard.h"

#include <new>

namespace tessly {

/// What `make` returns, a ReadResult; the status `noMemory` if it cannot have the memory that it
/// needs. How much that is, other programs decide: their contents are to end a read, not the
/// program.
template <typename Make>
auto withinMemory(Make make) -> decltype(make())
{
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return {.status = ReadStatus::noMemory};
    }
}

} // namespace tessly
