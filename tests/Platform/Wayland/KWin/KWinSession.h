#pragma once

#include "CompositorSession.h"

namespace tessly::test {

/// KWin on a virtual screen, which trusts every program of the user that it runs as: that of the
/// tests.
class KWinSession final : public CompositorSession
{
public:
    KWinSession();

    /// The one that all tests of this process share. Ends when the last test has.
    [[nodiscard]] static KWinSession& shared();
};

} // namespace tessly::test
