#pragma once

#include <cstdlib>
#include <memory>

namespace tessly {

struct FreeDeleter
{
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// A reply, event or error as xcb hands it out: one block from malloc.
template <typename T>
using XcbOwned = std::unique_ptr<T, FreeDeleter>;

template <typename T>
[[nodiscard]] XcbOwned<T> owned(T* block)
{
    return XcbOwned<T>(block);
}

} // namespace tessly
