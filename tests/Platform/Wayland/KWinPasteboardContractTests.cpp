#include "KWinSession.h"
#include "WaylandWorld.h"

namespace tessly::test {

namespace {

/// The real thing. Not with wl-paste, which waits for ever here while the clipboard is empty.
class KWinWorld final : public WaylandWorld
{
public:
    KWinWorld()
        : WaylandWorld(KWinSession::shared().display())
    {
    }

    [[nodiscard]] std::optional<QByteArray> otherProgramPastes() override
    {
        return m_other.paste();
    }

private:
    WaylandProgram m_other{KWinSession::shared().display()};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    KWin, PasteboardContract,
    testing::Values(PasteboardWorldFactory{"KWin", [] { return std::make_unique<KWinWorld>(); }}),
    testing::PrintToStringParamName());

} // namespace tessly::test
