#include "FrozenProcess.h"
#include "SwaySession.h"
#include "TestSupport.h"
#include "WaylandPasteboard.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// sway, the pasteboard under test on it, and wl-clipboard.
class SwayPasteboardTest : public testing::Test
{
protected:
    static constexpr qint64 noLimit = qint64{1} << 30;

    void SetUp() override
    {
        usePasteboard(
            {.stall = std::chrono::milliseconds(1000), .read = std::chrono::milliseconds(2500)});
    }

    void TearDown() override
    {
        m_former.push_back(std::move(m_owner));
        for (const auto& process : m_former) {
            if (process) {
                process->kill();
                process->waitForFinished();
            }
        }
    }

    [[nodiscard]] WaylandPasteboard& pasteboard() { return *m_pasteboard; }
    void usePasteboard(const WaylandClipboardDeadlines& deadlines)
    {
        m_pasteboard = std::make_unique<WaylandPasteboard>(
            WaylandPasteboard::Options{.display = m_session.display(), .deadlines = deadlines});
    }

    template <typename Action>
    qint64 changed(Action action)
    {
        const qint64 before = pasteboard().changeCount();
        action();
        EXPECT_TRUE(waitUntil([&] { return pasteboard().changeCount() != before; }));
        return pasteboard().changeCount();
    }

    /// wl-copy copies, and is owner() from then on; the content's change count.
    qint64 copied(const QByteArray& input, const QStringList& options = {})
    {
        return changed([&] {
            auto next =
                m_session.start(u"wl-copy"_s, QStringList{u"--foreground"_s} + options, input);
            m_owner.swap(next);
            m_former.push_back(std::move(next));
        });
    }
    [[nodiscard]] QProcess& owner() { return *m_owner; }

    [[nodiscard]] std::optional<QByteArray> pasted(const QString& type) const
    {
        return m_session.output(u"wl-paste"_s, {u"--no-newline"_s, u"--type"_s, type});
    }
    [[nodiscard]] std::optional<QByteArray> listed() const
    {
        return m_session.output(u"wl-paste"_s, {u"--list-types"_s});
    }

    [[nodiscard]] ReadResult<QByteArray> read(qint64 count, Flavour flavour = Flavour::plainText)
    {
        return await(pasteboard().read(count, flavour, noLimit));
    }

private:
    SwaySession& m_session = SwaySession::shared();
    std::unique_ptr<WaylandPasteboard> m_pasteboard;
    std::unique_ptr<QProcess> m_owner;
    std::vector<std::unique_ptr<QProcess>> m_former;
};

} // namespace

TEST_F(SwayPasteboardTest, textIsRead)
{
    const qint64 count = copied("wörd\n");
    EXPECT_TRUE(await(pasteboard().types(count))->contains(u"text/plain;charset=utf-8"_s));
    EXPECT_EQ(read(count).value, "wörd\n");
    EXPECT_EQ(read(count, Flavour::html).status, ReadStatus::absent);
}

TEST_F(SwayPasteboardTest, htmlIsRead)
{
    const qint64 count = copied("<b>bold</b>", {u"--type"_s, u"text/html"_s});
    EXPECT_EQ(read(count, Flavour::html).value, "<b>bold</b>");
}

TEST_F(SwayPasteboardTest, imagesAreRead)
{
    const QByteArray png = "\x89PNG\r\n\x1a\n" + QByteArray(1'000'000, '\x7f');
    const qint64 count = copied(png, {u"--type"_s, u"image/png"_s});
    EXPECT_EQ(read(count, Flavour::png).value, png);
    EXPECT_EQ(read(count).status, ReadStatus::absent);
}

TEST_F(SwayPasteboardTest, filesAreRead)
{
    const qint64 count =
        copied("# comment\r\nfile:///a\r\nfile:///b%20c\r\n", {u"--type"_s, u"text/uri-list"_s});
    EXPECT_EQ(
        await(pasteboard().readFileURLs(count, noLimit)).value,
        QByteArrayList({"file:///a", "file:///b%20c"}));
}

TEST_F(SwayPasteboardTest, aPasswordManagersHintConceals)
{
    const qint64 count = copied("secret", {u"--type"_s, u"x-kde-passwordManagerHint"_s});
    EXPECT_TRUE(await(pasteboard().types(count))->contains(Pasteboard::concealedType));
}

TEST_F(SwayPasteboardTest, theOtherClipboardIsNoBusinessOfIts)
{
    const qint64 count = copied("text");
    const auto other =
        SwaySession::shared().start(u"wl-copy"_s, {u"--foreground"_s, u"--primary"_s}, "selected");
    ASSERT_TRUE(waitUntil([] {
        return SwaySession::shared().output(u"wl-paste"_s, {u"--primary"_s, u"--no-newline"_s}) ==
               "selected";
    }));
    EXPECT_EQ(pasteboard().changeCount(), count);
    EXPECT_EQ(read(count).value, "text");
    other->kill();
    EXPECT_TRUE(other->waitForFinished());
}

TEST_F(SwayPasteboardTest, anOwnerForOneReadIsReadAndItsContentKept)
{
    const qint64 count = copied("once", {u"--paste-once"_s});
    ASSERT_TRUE(await(pasteboard().types(count)));
    EXPECT_EQ(owner().state(), QProcess::Running);
    EXPECT_EQ(read(count).value, "once");
    ASSERT_TRUE(waitUntil([this] { return owner().state() == QProcess::NotRunning; }));
    changed([&] { pasteboard().keepWhenOwnerLeaves(count, {{.plainText = "once"}}); });
    EXPECT_EQ(pasted(u"UTF8_STRING"_s), "once");
    EXPECT_EQ(pasted(Pasteboard::markerType), "1");
}

TEST_F(SwayPasteboardTest, anOwnerThatIsStoppedIsUnreadableAndTheNextIsNot)
{
    const qint64 count = copied("never");
    freeze(owner());
    EXPECT_TRUE(await(pasteboard().types(count)));
    EXPECT_EQ(read(count).status, ReadStatus::unreadable);
    EXPECT_EQ(read(copied("next")).value, "next");
}

TEST_F(SwayPasteboardTest, aNewerCopyEndsTheReadOfOneThatIsStoppedAtOnce)
{
    usePasteboard({.stall = std::chrono::hours(1), .read = std::chrono::hours(1)});
    const qint64 count = copied("never");
    freeze(owner());
    auto text = pasteboard().read(count, Flavour::plainText, noLimit);
    const qint64 next = copied("next");
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
    EXPECT_EQ(read(next).value, "next");
}

TEST_F(SwayPasteboardTest, anOwnerThatIsKilledLeavesItsContentToBeKept)
{
    const qint64 count = copied("text");
    EXPECT_EQ(read(count).value, "text");
    pasteboard().keepWhenOwnerLeaves(count, {{.plainText = "text"}});
    changed([this] { owner().kill(); });
    EXPECT_EQ(pasted(u"text/plain"_s), "text");
}

TEST_F(SwayPasteboardTest, aSecondOwnerInARowEndsTheKeepingOfTheFirst)
{
    const qint64 count = copied("first");
    pasteboard().keepWhenOwnerLeaves(count, {{.plainText = "first"}});
    const qint64 next = copied("second");
    EXPECT_EQ(pasted(u"UTF8_STRING"_s), "second");
    EXPECT_EQ(pasteboard().changeCount(), next);
}

TEST_F(SwayPasteboardTest, whatIsWrittenIsListedAndPasted)
{
    changed([this] {
        EXPECT_TRUE(pasteboard().write({{.plainText = "wörd", .html = "<b>wörd</b>"}}));
    });
    const auto types = listed();
    ASSERT_TRUE(types);
    EXPECT_EQ(
        types->trimmed().split('\n'),
        QByteArrayList(
            {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "STRING", "TEXT", "text/html",
             Pasteboard::markerType.toUtf8()}));
    EXPECT_EQ(pasted(u"text/plain;charset=utf-8"_s), "wörd");
    EXPECT_EQ(pasted(u"STRING"_s), "w\xF6rd");
    EXPECT_EQ(pasted(u"text/html"_s), "<b>wörd</b>");
}

TEST_F(SwayPasteboardTest, aLargeContentIsPastedAndRead)
{
    const QByteArray large = QByteArray("0123456789abcdef").repeated(25 * 65536);
    changed([&] { EXPECT_TRUE(pasteboard().write({{.plainText = large}})); });
    EXPECT_EQ(pasted(u"UTF8_STRING"_s), large);
    EXPECT_EQ(read(copied(large)).value, large);
}

TEST_F(SwayPasteboardTest, clearingLeavesNothing)
{
    copied("text");
    changed([this] { pasteboard().clear(); });
    EXPECT_EQ(pasted(u"UTF8_STRING"_s), std::nullopt);
    EXPECT_TRUE(waitUntil([this] { return owner().state() == QProcess::NotRunning; }));
}

TEST_F(SwayPasteboardTest, anotherProgramsClearingOfOwnContentIsAChange)
{
    changed([this] { EXPECT_TRUE(pasteboard().write({{.plainText = "own"}})); });
    const qint64 count =
        changed([] { EXPECT_TRUE(SwaySession::shared().output(u"wl-copy"_s, {u"--clear"_s})); });
    EXPECT_EQ(await(pasteboard().types(count)), QSet<QString>());
    EXPECT_EQ(pasted(u"UTF8_STRING"_s), std::nullopt);
}

} // namespace tessly::test
