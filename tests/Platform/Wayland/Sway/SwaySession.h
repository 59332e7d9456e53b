#pragma once

#include "CompositorSession.h"

namespace tessly::test {

/// A headless sway, run as an ordinary user.
class SwaySession final : public CompositorSession
{
public:
    SwaySession();

    /// The one that all tests of this process share. Ends when the last test has.
    [[nodiscard]] static SwaySession& shared();
};

} // namespace tessly::test
