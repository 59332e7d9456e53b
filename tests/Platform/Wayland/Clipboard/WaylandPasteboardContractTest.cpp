#include "TestCompositor.h"
#include "WaylandWorld.h"

namespace tessly::test {

namespace {

/// Made first, so that the world finds it.
struct HasCompositor
{
    TestCompositor compositor;
};

class CompositorWorld final : private HasCompositor, public WaylandWorld
{
public:
    CompositorWorld()
        : WaylandWorld(compositor.display())
    {
    }

    [[nodiscard]] std::optional<QByteArray> otherProgramPastes() override
    {
        return m_other.paste();
    }

private:
    WaylandProgram m_other{compositor.display()};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Wayland, PasteboardContract,
    testing::Values(PasteboardWorldFactory{
        "Wayland", [] { return std::make_unique<CompositorWorld>(); }}),
    testing::PrintToStringParamName());

} // namespace tessly::test
