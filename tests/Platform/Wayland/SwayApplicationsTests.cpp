#include "SwaySession.h"
#include "WaylandApplications.h"
#include "contract/WorkspaceContract.h"

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

class SwayApplications final : public WaylandApplications
{
public:
    SwayApplications()
        : WaylandApplications(SwaySession::shared().display())
    {
    }

    void bringToFront(const QString& id)
    {
        EXPECT_TRUE(
            SwaySession::shared().output(u"swaymsg"_s, {u"[app_id=\"%1\"] focus"_s.arg(id)}));
    }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Sway, WorkspaceContract, SwayApplications);

} // namespace tessly::test
