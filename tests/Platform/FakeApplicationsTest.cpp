#include "FakeApplications.h"

#include "contract/KeyEventPosterContract.h"
#include "contract/WorkspaceContract.h"

namespace tessly::test {

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WorkspaceContract, FakeApplications);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, KeyEventPosterContract, FakeApplications);

} // namespace tessly::test
