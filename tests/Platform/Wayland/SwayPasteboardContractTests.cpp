#include "SwaySession.h"
#include "WaylandWorld.h"

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// The real thing, with wl-paste to paste.
class SwayWorld final : public WaylandWorld
{
public:
    SwayWorld()
        : WaylandWorld(SwaySession::shared().display())
    {
    }

    [[nodiscard]] std::optional<QByteArray> otherProgramPastes() override
    {
        return SwaySession::shared().output(
            u"wl-paste"_s, {u"--no-newline"_s, u"--type"_s, u"UTF8_STRING"_s});
    }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Sway, PasteboardContract,
    testing::Values(PasteboardWorldFactory{"Sway", [] { return std::make_unique<SwayWorld>(); }}),
    testing::PrintToStringParamName());

} // namespace tessly::test
