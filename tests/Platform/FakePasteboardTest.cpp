#include "FakePasteboard.h"
#include "PasteboardContract.h"

namespace tessly::test {

namespace {

class FakeWorld final : public PasteboardWorld
{
public:
    [[nodiscard]] Pasteboard& pasteboard() override { return m_pasteboard; }

    void copy(const Content& content) override
    {
        FakePasteboard::Content copied{
            .plainText = content.plainText,
            .html = content.html,
            .png = content.png,
            .fileURLs = content.fileURLs,
            .extraTypes = content.extraTypes,
            .leavesAfterOneRead = content.leavesAfterOneRead};
        if (content.refusesHTML) {
            copied.refused.insert(Flavour::html);
        }
        if (content.hangsAtHTML) {
            copied.hanging = {Flavour::html};
        }
        if (content.hangs) {
            copied.hanging = {Flavour::plainText, Flavour::html, Flavour::png};
        }
        m_pasteboard.copy(std::move(copied));
    }

    void ownerLeaves() override { m_pasteboard.ownerLeaves(); }

    [[nodiscard]] std::optional<QByteArray> otherProgramPastes() override
    {
        return m_pasteboard.pastedText();
    }

private:
    FakePasteboard m_pasteboard;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Fake, PasteboardContract,
    testing::Values(PasteboardWorldFactory{"Fake", [] { return std::make_unique<FakeWorld>(); }}),
    testing::PrintToStringParamName());

} // namespace tessly::test
