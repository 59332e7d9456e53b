#pragma once

#include "Pasteboard.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

namespace tessly::test {

/// A pasteboard and the other programs around it.
class PasteboardWorld
{
public:
    /// What another program offers.
    struct Content
    {
        std::optional<QByteArray> plainText = {};
        std::optional<QByteArray> html = {};
        std::optional<QByteArray> png = {};
        QByteArrayList fileURLs = {};
        /// Names offered in addition.
        QSet<QString> extraTypes = {};
        /// It refuses to hand over the HTML that it offers.
        bool refusesHTML = false;
        /// It lists what it offers, and is silent when asked for it.
        bool hangs = false;
        /// It is silent when asked for the HTML that it offers.
        bool hangsAtHTML = false;
        /// It ends once it has handed over one flavour.
        bool leavesAfterOneRead = false;
    };

    PasteboardWorld() = default;
    PasteboardWorld(const PasteboardWorld&) = delete;
    PasteboardWorld& operator=(const PasteboardWorld&) = delete;
    virtual ~PasteboardWorld() = default;

    [[nodiscard]] virtual Pasteboard& pasteboard() = 0;

    /// Another program copies. Returns once it owns the clipboard.
    virtual void copy(const Content& content) = 0;
    /// The program that copied last ends, if it has not yet. Returns once it has.
    virtual void ownerLeaves() = 0;
    /// What another program gets that pastes plain text; none if there is nothing for it.
    [[nodiscard]] virtual std::optional<QByteArray> otherProgramPastes() = 0;
};

/// A name and a way to make a world.
struct PasteboardWorldFactory
{
    const char* name;
    std::function<std::unique_ptr<PasteboardWorld>()> make;

    friend std::ostream& operator<<(std::ostream& stream, const PasteboardWorldFactory& factory)
    {
        return stream << factory.name;
    }
};

/// What every implementation of Pasteboard does, and every fake.
class PasteboardContract : public testing::TestWithParam<PasteboardWorldFactory>
{
protected:
    static constexpr qint64 noLimit = qint64{1} << 30;

    void SetUp() override { m_world = GetParam().make(); }

    [[nodiscard]] PasteboardWorld& world() { return *m_world; }
    [[nodiscard]] Pasteboard& pasteboard() { return m_world->pasteboard(); }

    /// Another program copies; the content's change count.
    qint64 copied(const PasteboardWorld::Content& content)
    {
        return changed([&] { m_world->copy(content); });
    }

    /// The change count once it has moved on from what it was before the action.
    template <typename Action>
    qint64 changed(Action action)
    {
        const qint64 before = pasteboard().changeCount();
        action();
        EXPECT_TRUE(waitUntil([&] { return pasteboard().changeCount() != before; }));
        return pasteboard().changeCount();
    }

    [[nodiscard]] ReadResult<QByteArray>
    read(qint64 count, Flavour flavour, qint64 byteLimit = noLimit)
    {
        return await(pasteboard().read(count, flavour, byteLimit));
    }

    /// Waits until another program pastes this, or finds nothing to paste.
    [[nodiscard]] bool isPasted(const std::optional<QByteArray>& text)
    {
        return waitUntil([&] { return m_world->otherProgramPastes() == text; });
    }

    static std::vector<PasteboardItem> textItem(const QByteArray& text)
    {
        return {PasteboardItem{.plainText = text}};
    }

private:
    std::unique_ptr<PasteboardWorld> m_world;
};

TEST_P(PasteboardContract, everyCopyOfAnotherProgramHasAChangeCountOfItsOwn)
{
    const qint64 first = copied({.plainText = "first"});
    const qint64 second = copied({.plainText = "second"});
    EXPECT_NE(first, second);
    EXPECT_EQ(pasteboard().changeCount(), second);
}

TEST_P(PasteboardContract, tellsOfEveryCopyThatIsNotFollowedByAnother)
{
    int told = 0;
    pasteboard().setChanged([&told] { ++told; });
    EXPECT_TRUE(pasteboard().notifiesOfChanges());
    for (int copies = 1; copies <= 3; ++copies) {
        copied({.plainText = "text"});
        EXPECT_TRUE(waitUntil([&] { return told >= copies; }));
    }
    pasteboard().setChanged({});
    copied({.plainText = "text"});
    EXPECT_EQ(told, 3);
}

TEST_P(PasteboardContract, onceCaughtUpTheChangeCountIsThatOfTheLastCopy)
{
    for (int round = 0; round < 20; ++round) {
        const qint64 before = pasteboard().changeCount();
        world().copy({.plainText = "text"});
        await(pasteboard().catchUp());
        EXPECT_NE(pasteboard().changeCount(), before) << round;
    }
}

TEST_P(PasteboardContract, holdsAWriteUntilSomethingElseIsThere)
{
    EXPECT_FALSE(await(pasteboard().holds({})));
    const WriteTicket first = pasteboard().write(textItem("first"));
    ASSERT_TRUE(first);
    EXPECT_TRUE(await(pasteboard().holds(first)));
    const WriteTicket second = pasteboard().write(textItem("second"));
    EXPECT_NE(first, second);
    EXPECT_FALSE(await(pasteboard().holds(first)));
    EXPECT_TRUE(await(pasteboard().holds(second)));
    copied({.plainText = "another's"});
    EXPECT_FALSE(await(pasteboard().holds(second)));
}

TEST_P(PasteboardContract, itemsThatAreTakenBackAreNotOfferedWhenTheOwnerLeaves)
{
    const qint64 count = copied({.plainText = "text"});
    pasteboard().keepWhenOwnerLeaves(count, textItem("text"));
    pasteboard().keepWhenOwnerLeaves(count, {});
    world().ownerLeaves();
    EXPECT_TRUE(isPasted(std::nullopt));
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_P(PasteboardContract, anOwnerThatLeavesIsNotACopy)
{
    const qint64 count = copied({.plainText = "text"});
    world().ownerLeaves();
    ASSERT_TRUE(isPasted(std::nullopt));
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_P(PasteboardContract, tellsACopyThatFollowsAnOwnerThatLeft)
{
    const qint64 first = copied({.plainText = "text"});
    const qint64 second = copied({.plainText = "text"});
    EXPECT_FALSE(pasteboard().followsOwnerThatLeft(first));
    EXPECT_FALSE(pasteboard().followsOwnerThatLeft(second)) << "it has replaced one";

    world().ownerLeaves();
    ASSERT_TRUE(isPasted(std::nullopt));
    const qint64 third = copied({.plainText = "text"});
    EXPECT_TRUE(pasteboard().followsOwnerThatLeft(third));
    EXPECT_FALSE(pasteboard().followsOwnerThatLeft(second));
}

TEST_P(PasteboardContract, whatIsKeptAndOfferedMeanwhileIsNoOwner)
{
    const qint64 first = copied({.plainText = "text"});
    pasteboard().keepWhenOwnerLeaves(first, textItem("text"));
    changed([this] { world().ownerLeaves(); });
    const qint64 second = copied({.plainText = "text"});
    EXPECT_TRUE(pasteboard().followsOwnerThatLeft(second));
}

TEST_P(PasteboardContract, aCopyAfterAnOwnWriteFollowsThat)
{
    copied({.plainText = "text"});
    world().ownerLeaves();
    ASSERT_TRUE(isPasted(std::nullopt));
    changed([this] { EXPECT_TRUE(pasteboard().write(textItem("own"))); });
    const qint64 count = copied({.plainText = "text"});
    EXPECT_FALSE(pasteboard().followsOwnerThatLeft(count));
}

TEST_P(PasteboardContract, readsEachFlavourThatIsOffered)
{
    const QByteArray png = "\x89PNG\r\n\x1a\n and more";
    const qint64 count =
        copied({.plainText = "text", .html = QByteArray("<b>\0text</b>", 12), .png = png});
    const auto text = read(count, Flavour::plainText);
    EXPECT_EQ(text.status, ReadStatus::read);
    EXPECT_EQ(text.value, "text");
    const auto html = read(count, Flavour::html);
    EXPECT_EQ(html.status, ReadStatus::read);
    EXPECT_EQ(html.value, QByteArray("<b>\0text</b>", 12));
    const auto image = read(count, Flavour::png);
    EXPECT_EQ(image.status, ReadStatus::read);
    EXPECT_EQ(image.value, png);
}

TEST_P(PasteboardContract, whatIsNotOfferedIsAbsent)
{
    const qint64 count = copied({.plainText = "text"});
    EXPECT_EQ(read(count, Flavour::rtf).status, ReadStatus::absent);
    EXPECT_EQ(read(count, Flavour::otherImage).status, ReadStatus::absent);
    EXPECT_EQ(await(pasteboard().readFileURLs(count, noLimit)).status, ReadStatus::absent);
}

TEST_P(PasteboardContract, whatIsRefusedIsAbsentAndTheRestIsReadable)
{
    const qint64 count = copied({.plainText = "text", .html = "<b>", .refusesHTML = true});
    EXPECT_EQ(read(count, Flavour::html).status, ReadStatus::absent);
    EXPECT_EQ(read(count, Flavour::plainText).value, "text");
}

TEST_P(PasteboardContract, theByteLimitItselfIsAllowed)
{
    const qint64 count = copied({.plainText = "12345"});
    EXPECT_EQ(read(count, Flavour::plainText, 5).value, "12345");
    const auto tooLarge = read(count, Flavour::plainText, 4);
    EXPECT_EQ(tooLarge.status, ReadStatus::tooLarge);
    EXPECT_EQ(tooLarge.value, QByteArray());
}

TEST_P(PasteboardContract, anEmptyTextIsReadAsOne)
{
    const qint64 count = copied({.plainText = ""});
    const auto text = read(count, Flavour::plainText);
    EXPECT_EQ(text.status, ReadStatus::read);
    EXPECT_TRUE(text.value.isEmpty());
}

TEST_P(PasteboardContract, textIsMendedWhereItIsNotUTF8)
{
    const qint64 count = copied({.plainText = "a\xFFz"});
    EXPECT_EQ(read(count, Flavour::plainText).value, "a\xEF\xBF\xBDz");
}

TEST_P(PasteboardContract, readsFileURLsInTheirOrder)
{
    const QByteArrayList urls = {"file:///b%20c", "file:///a"};
    const qint64 count = copied({.fileURLs = urls});
    const auto files = await(pasteboard().readFileURLs(count, noLimit));
    EXPECT_EQ(files.status, ReadStatus::read);
    EXPECT_EQ(files.value, urls);
}

TEST_P(PasteboardContract, theByteLimitOfFilesCountsTheirURLs)
{
    const qint64 count = copied({.fileURLs = {"file:///1", "file:///2"}});
    EXPECT_EQ(await(pasteboard().readFileURLs(count, 18)).status, ReadStatus::read);
    EXPECT_EQ(await(pasteboard().readFileURLs(count, 17)).status, ReadStatus::tooLarge);
}

TEST_P(PasteboardContract, listsTheTypesThatAreOffered)
{
    const qint64 count =
        copied({.plainText = "text", .extraTypes = {QStringLiteral("x-own/type")}});
    const auto types = await(pasteboard().types(count));
    ASSERT_TRUE(types);
    EXPECT_TRUE(types->contains(QStringLiteral("x-own/type")));
    EXPECT_TRUE(types->contains(QStringLiteral("UTF8_STRING")));
    EXPECT_FALSE(types->contains(QStringLiteral("text/html")));
    EXPECT_FALSE(types->contains(Pasteboard::concealedType));
    EXPECT_FALSE(types->contains(Pasteboard::markerType));
}

TEST_P(PasteboardContract, aPasswordManagersHintConceals)
{
    const qint64 count = copied(
        {.plainText = "secret", .extraTypes = {QStringLiteral("x-kde-passwordManagerHint")}});
    const auto types = await(pasteboard().types(count));
    ASSERT_TRUE(types);
    EXPECT_TRUE(types->contains(Pasteboard::concealedType));
}

TEST_P(PasteboardContract, anOlderContentIsNotReadAnyMore)
{
    const qint64 older = copied({.plainText = "older", .fileURLs = {"file:///older"}});
    copied({.plainText = "newer"});
    EXPECT_EQ(await(pasteboard().types(older)), std::nullopt);
    EXPECT_EQ(read(older, Flavour::plainText).status, ReadStatus::unreadable);
    EXPECT_EQ(await(pasteboard().readFileURLs(older, noLimit)).status, ReadStatus::unreadable);
}

TEST_P(PasteboardContract, anOwnerThatHangsIsUnreadableAndTheNextCopyIsNot)
{
    const qint64 hung = copied({.plainText = "never", .hangs = true});
    EXPECT_EQ(read(hung, Flavour::plainText).status, ReadStatus::unreadable);
    const qint64 next = copied({.plainText = "next"});
    EXPECT_EQ(read(next, Flavour::plainText).value, "next");
}

TEST_P(PasteboardContract, whatAnOwnerThatHangsAfterOneReadDidNotHandOverIsAbsent)
{
    const qint64 count = copied(
        {.plainText = "text", .html = "<b>", .fileURLs = {"file:///file"}, .hangsAtHTML = true});
    EXPECT_EQ(read(count, Flavour::plainText).value, "text");
    EXPECT_EQ(read(count, Flavour::html).status, ReadStatus::absent);
    // It is not waited for a second time.
    EXPECT_EQ(await(pasteboard().readFileURLs(count, noLimit)).status, ReadStatus::absent);
    const qint64 next = copied({.plainText = "next"});
    EXPECT_EQ(read(next, Flavour::plainText).value, "next");
}

TEST_P(PasteboardContract, anOwnerThatLeftUnreadIsUnreadable)
{
    const qint64 count = copied({.plainText = "text"});
    world().ownerLeaves();
    ASSERT_TRUE(isPasted(std::nullopt));
    EXPECT_EQ(await(pasteboard().types(count)), std::nullopt);
    EXPECT_EQ(read(count, Flavour::plainText).status, ReadStatus::unreadable);
}

TEST_P(PasteboardContract, whatAnOwnerThatLeavesAfterOneReadDidNotHandOverIsAbsent)
{
    const qint64 count = copied({.plainText = "text", .html = "<b>", .leavesAfterOneRead = true});
    ASSERT_TRUE(await(pasteboard().types(count)));
    EXPECT_EQ(read(count, Flavour::plainText).value, "text");
    world().ownerLeaves();
    EXPECT_EQ(read(count, Flavour::html).status, ReadStatus::absent);
    EXPECT_EQ(read(count, Flavour::rtf).status, ReadStatus::absent);
}

TEST_P(PasteboardContract, whatIsWrittenIsPastedAndReadBackWithTheMarker)
{
    copied({.plainText = "before", .html = "<b>"});
    const qint64 count = changed([this] { EXPECT_TRUE(pasteboard().write(textItem("wörd"))); });
    EXPECT_TRUE(isPasted("wörd"));
    const auto types = await(pasteboard().types(count));
    ASSERT_TRUE(types);
    EXPECT_TRUE(types->contains(Pasteboard::markerType));
    EXPECT_EQ(read(count, Flavour::plainText).value, "wörd");
    EXPECT_EQ(read(count, Flavour::plainText, 4).status, ReadStatus::tooLarge);
    EXPECT_EQ(read(count, Flavour::html).status, ReadStatus::absent);
}

TEST_P(PasteboardContract, filesAreWrittenAsOneList)
{
    const qint64 count = changed([this] {
        EXPECT_TRUE(pasteboard().write(
            {PasteboardItem{.fileURL = "file:///a"}, PasteboardItem{.fileURL = "file:///b"}}));
    });
    EXPECT_EQ(
        await(pasteboard().readFileURLs(count, noLimit)).value,
        QByteArrayList({"file:///a", "file:///b"}));
    EXPECT_EQ(read(count, Flavour::plainText).value, "/a\n/b") << "for who knows no files";
}

TEST_P(PasteboardContract, writingNothingIsRefusedAndLeavesTheContent)
{
    const qint64 count = copied({.plainText = "text"});
    EXPECT_FALSE(pasteboard().write({}));
    EXPECT_FALSE(pasteboard().write({PasteboardItem()}));
    EXPECT_EQ(read(count, Flavour::plainText).value, "text");
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_P(PasteboardContract, clearingLeavesNothingToPaste)
{
    copied({.plainText = "text"});
    const qint64 count = changed([this] { pasteboard().clear(); });
    EXPECT_TRUE(isPasted(std::nullopt));
    EXPECT_EQ(await(pasteboard().types(count)), QSet<QString>());
    EXPECT_EQ(read(count, Flavour::plainText).status, ReadStatus::absent);
    EXPECT_EQ(await(pasteboard().readFileURLs(count, noLimit)).status, ReadStatus::absent);
}

TEST_P(PasteboardContract, clearingTakesBackWhatWasWritten)
{
    changed([this] { EXPECT_TRUE(pasteboard().write(textItem("own"))); });
    ASSERT_TRUE(isPasted("own"));
    changed([this] { pasteboard().clear(); });
    EXPECT_TRUE(isPasted(std::nullopt));
}

TEST_P(PasteboardContract, keptContentIsOfferedOnceItsOwnerLeaves)
{
    const qint64 count = copied({.plainText = "text"});
    pasteboard().keepWhenOwnerLeaves(count, textItem("kept"));
    EXPECT_EQ(world().otherProgramPastes(), "text");
    const qint64 kept = changed([this] { world().ownerLeaves(); });
    EXPECT_TRUE(isPasted("kept"));
    const auto types = await(pasteboard().types(kept));
    ASSERT_TRUE(types);
    EXPECT_TRUE(types->contains(Pasteboard::markerType));
}

TEST_P(PasteboardContract, contentIsKeptAlsoAfterItsOwnerLeft)
{
    const qint64 count = copied({.plainText = "text", .leavesAfterOneRead = true});
    ASSERT_EQ(read(count, Flavour::plainText).value, "text");
    world().ownerLeaves();
    ASSERT_TRUE(isPasted(std::nullopt));
    pasteboard().keepWhenOwnerLeaves(count, textItem("kept"));
    EXPECT_TRUE(isPasted("kept"));
}

TEST_P(PasteboardContract, keptContentIsOfferedOnceItsSourceHasEnded)
{
    const qint64 count = copied({.plainText = "text"});
    pasteboard().keepWhenOwnerLeaves(count, textItem("kept"), [] { return true; });
    changed([this] { world().ownerLeaves(); });
    EXPECT_TRUE(isPasted("kept"));
}

TEST_P(PasteboardContract, contentOfAnOwnerForOneReadIsKeptThoughItsSourceIsThere)
{
    const qint64 count = copied({.plainText = "text", .leavesAfterOneRead = true});
    ASSERT_EQ(read(count, Flavour::plainText).value, "text");
    pasteboard().keepWhenOwnerLeaves(count, textItem("kept"), [] { return false; });
    // Who asks a program that is just ending may wait for ever.
    world().ownerLeaves();
    EXPECT_TRUE(isPasted("kept"));
}

TEST_P(PasteboardContract, aNewerCopyEndsTheKeeping)
{
    const qint64 count = copied({.plainText = "older"});
    pasteboard().keepWhenOwnerLeaves(count, textItem("older"));
    copied({.plainText = "newer"});
    world().ownerLeaves();
    ASSERT_TRUE(isPasted(std::nullopt));
    // Nor does it begin for what is old already.
    pasteboard().keepWhenOwnerLeaves(count, textItem("older"));
    const qint64 next = copied({.plainText = "next"});
    EXPECT_EQ(world().otherProgramPastes(), "next");
    EXPECT_EQ(pasteboard().changeCount(), next);
}

TEST_P(PasteboardContract, anOwnWriteEndsTheKeeping)
{
    const qint64 count = copied({.plainText = "older"});
    pasteboard().keepWhenOwnerLeaves(count, textItem("older"));
    changed([this] { EXPECT_TRUE(pasteboard().write(textItem("own"))); });
    world().ownerLeaves();
    EXPECT_EQ(world().otherProgramPastes(), "own");
}

TEST_P(PasteboardContract, clearedContentIsNotBroughtBack)
{
    const qint64 count = copied({.plainText = "text"});
    pasteboard().keepWhenOwnerLeaves(count, textItem("text"));
    changed([this] { pasteboard().clear(); });
    world().ownerLeaves();
    EXPECT_EQ(world().otherProgramPastes(), std::nullopt);
}

} // namespace tessly::test
