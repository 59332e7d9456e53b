#include "X11Applications.h"

#include "contract/KeyEventPosterContract.h"
#include "contract/WorkspaceContract.h"

namespace tessly::test {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, WorkspaceContract, X11Applications);
INSTANTIATE_TYPED_TEST_SUITE_P(X11, KeyEventPosterContract, X11Applications);

} // namespace tessly::test
