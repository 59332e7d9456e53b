#include "FlavourTargets.h"
#include "PasteboardOffer.h"
#include "WaylandPasteboardFixture.h"

#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

// Much more than a pipe holds.
constexpr qsizetype largeSize = 5'000'000;

/// Someone who takes the clipboard's content at a pace of its own.
class SlowReader
{
public:
    explicit SlowReader(WaylandProgram& program, const QByteArray& type = "UTF8_STRING")
    {
        std::array<int, 2> pipe = {};
        EXPECT_EQ(pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK), 0);
        m_file = pipe[0];
        program.receive(type, pipe[1]);
    }
    ~SlowReader() { vanish(); }
    SlowReader(const SlowReader&) = delete;
    SlowReader& operator=(const SlowReader&) = delete;

    /// Takes what has come, this much of it at the most; false if nothing has. What came counts in
    /// `taken`.
    bool take(std::size_t most = 65536)
    {
        std::vector<char> chunk(most);
        const auto size = ::read(m_file, chunk.data(), chunk.size());
        m_taken += size > 0 ? size : 0;
        m_isAtEnd = m_isAtEnd || size == 0;
        return size > 0;
    }
    void vanish()
    {
        if (m_file >= 0) {
            ::close(m_file);
            m_file = -1;
        }
    }
    [[nodiscard]] qint64 taken() const { return m_taken; }
    [[nodiscard]] bool isAtEnd() const { return m_isAtEnd; }

private:
    int m_file = -1;
    qint64 m_taken = 0;
    bool m_isAtEnd = false;
};

class WaylandPasteboardWriteTest : public WaylandPasteboardTest
{
protected:
    /// Keeps "kept"; the function is told how often it has been asked. What is returned expires
    /// when nothing is kept any more.
    std::weak_ptr<int> keep(qint64 count, std::function<bool(int look)> hasSourceEnded)
    {
        const auto looks = std::make_shared<int>(0);
        pasteboard().keepWhenOwnerLeaves(
            count, {{.plainText = "kept"}}, [looks, hasSourceEnded = std::move(hasSourceEnded)] {
                return hasSourceEnded(++*looks);
            });
        return looks;
    }
};

QByteArray large()
{
    return QByteArray("0123456789abcdef").repeated(largeSize / 16);
}

} // namespace

TEST_F(WaylandPasteboardWriteTest, everyFlavourIsOfferedUnderEveryNameAndServed)
{
    const std::vector<PasteboardItem> items = {
        {.plainText = "wörd",
         .rtf = "{\\rtf1 a}",
         .html = "<b>a</b>",
         .png = "\x89PNG\r\n\x1a\n",
         .fileURL = "file:///a"},
        {.fileURL = "file:///b%20c"}};
    changed([&] { EXPECT_TRUE(m_ticket = pasteboard().write(items)); });
    PasteboardOffer offer(items);
    EXPECT_EQ(program().types(), offer.names());
    EXPECT_TRUE(offer.names().contains(Pasteboard::markerType.toUtf8()));
    for (const QByteArray& name : offer.names()) {
        EXPECT_EQ(program().paste(name), offer.bytes(name)) << name.constData();
    }
    EXPECT_EQ(program().paste("STRING"), "w\xF6rd");
    EXPECT_EQ(program().paste("text/uri-list"), "file:///a\r\nfile:///b%20c\r\n");
}

TEST_F(WaylandPasteboardWriteTest, ownContentIsNotReadThroughAPipe)
{
    const qint64 count = written({.plainText = "own", .html = "<b>"});
    EXPECT_EQ(read(count).value, "own");
    EXPECT_EQ(read(count, Flavour::html).value, "<b>");
    EXPECT_EQ(read(count, Flavour::png).status, ReadStatus::absent);
    EXPECT_TRUE(types(count)->contains(Pasteboard::markerType));
    EXPECT_EQ(compositor().receives(), 0);
}

TEST_F(WaylandPasteboardWriteTest, onceWrittenItIsWhatOthersPaste)
{
    EXPECT_FALSE(await(pasteboard().holds(m_ticket)));
    copied({{"UTF8_STRING", "another's"}});
    ASSERT_TRUE(m_ticket = pasteboard().write({{.plainText = "own"}}));
    EXPECT_TRUE(await(pasteboard().holds(m_ticket)));
    EXPECT_EQ(program().paste(), "own");
    copied({{"UTF8_STRING", "another's"}});
    EXPECT_FALSE(await(pasteboard().holds(m_ticket)));
}

TEST_F(WaylandPasteboardWriteTest, theMarkerOfAnotherIsNotTakenForItsOwn)
{
    written({.plainText = "own"});
    const qint64 count =
        copied({{"UTF8_STRING", "another's"}, {Pasteboard::markerType.toUtf8(), "1"}});
    EXPECT_EQ(read(count).value, "another's");
}

TEST_F(WaylandPasteboardWriteTest, ofManyWritesAtOnceTheLastRemains)
{
    const qint64 before = pasteboard().changeCount();
    for (int number = 1; number <= 50; ++number) {
        ASSERT_TRUE(m_ticket = pasteboard().write({{.plainText = QByteArray::number(number)}}));
    }
    ASSERT_TRUE(waitUntil([&] { return pasteboard().changeCount() == before + 50; }));
    EXPECT_EQ(read(before + 50).value, "50");
    EXPECT_EQ(program().paste(), "50");
}

TEST_F(WaylandPasteboardWriteTest, ofWritesAndCopiesAtOnceTheLastIsReadAsWhatItIs)
{
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(m_ticket = pasteboard().write({{.plainText = "own"}}));
        program().copyText("another's");
        ASSERT_TRUE(m_ticket = pasteboard().write({{.plainText = "own again"}}));
        // Whichever came last: what is read is what others paste.
        ASSERT_TRUE(waitUntil([this] {
            const auto text = read(pasteboard().changeCount());
            return text.status == ReadStatus::read && text.value == program().paste() &&
                   text.value == "own again";
        }));
    }
}

TEST_F(WaylandPasteboardWriteTest, severalSlowReadersAreServedAtOnce)
{
    usePasteboard(longDeadlines());
    const QByteArray content = large();
    written({.plainText = content});
    std::vector<std::unique_ptr<SlowReader>> slow;
    slow.reserve(5);
    for (int number = 0; number < 5; ++number) {
        slow.push_back(std::make_unique<SlowReader>(program()));
    }
    // Those that do not move hold up nobody else.
    EXPECT_EQ(program().paste(), content);
    EXPECT_TRUE(waitUntil(
        [&] {
            bool isDone = true;
            for (const auto& reader : slow) {
                reader->take(100'000);
                isDone = isDone && reader->isAtEnd();
            }
            return isDone;
        },
        std::chrono::seconds(30)));
    for (const auto& reader : slow) {
        EXPECT_EQ(reader->taken(), content.size());
    }
}

TEST_F(WaylandPasteboardWriteTest, readersThatVanishAreForgotten)
{
    const QByteArray content = large();
    written({.plainText = content});
    for (int number = 0; number < 20; ++number) {
        SlowReader reader(program());
        ASSERT_TRUE(waitUntil([&] { return reader.take(1000); }));
        reader.vanish();
    }
    EXPECT_EQ(program().paste(), content);
}

TEST_F(WaylandPasteboardWriteTest, aReaderThatFallsSilentIsLetGoOf)
{
    written({.plainText = large()});
    SlowReader reader(program());
    ASSERT_TRUE(waitUntil([&] { return reader.take(1); }));
    // The deadline passes while nothing is taken; then there is what the pipe holds, and the end.
    const QDeadlineTimer deadline(shortDeadlines().reader + std::chrono::milliseconds(500));
    ASSERT_TRUE(waitUntil([&] { return deadline.hasExpired(); }));
    EXPECT_TRUE(waitUntil([&] {
        reader.take();
        return reader.isAtEnd();
    }));
    EXPECT_LT(reader.taken(), largeSize);
}

TEST_F(WaylandPasteboardWriteTest, contentGoesIntoASocketButIntoNoOrdinaryFile)
{
    written({.plainText = "own"});
    std::array<int, 2> sockets = {};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()), 0);
    program().receive("UTF8_STRING", sockets[1]);
    std::array<char, 16> bytes = {};
    EXPECT_EQ(::read(sockets[0], bytes.data(), bytes.size()), 3);
    EXPECT_EQ(::read(sockets[0], bytes.data(), bytes.size()), 0);
    ::close(sockets[0]);

    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.filePath(u"file"_s));
    program().receive("UTF8_STRING", open(path.constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
    // What is asked for later is served later.
    EXPECT_EQ(program().paste(), "own");
    QFile file(folder.filePath(u"file"_s));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray());
}

TEST_F(WaylandPasteboardWriteTest, losingTheClipboardFreesTheContent)
{
    const QByteArray content = large();
    ASSERT_TRUE(content.isDetached());
    written({.plainText = content});
    EXPECT_FALSE(content.isDetached());
    copied({{"UTF8_STRING", "another's"}});
    EXPECT_TRUE(waitUntil([&] { return content.isDetached(); }));

    written({.plainText = content});
    EXPECT_FALSE(content.isDetached());
    changed([this] { pasteboard().clear(); });
    EXPECT_TRUE(waitUntil([&] { return content.isDetached(); }));

    written({.plainText = content});
    written({.plainText = "newer"});
    EXPECT_TRUE(waitUntil([&] { return content.isDetached(); }));
}

TEST_F(WaylandPasteboardWriteTest, clearingWhatIsEmptyIsAChangeToo)
{
    const qint64 count = changed([this] { pasteboard().clear(); });
    EXPECT_EQ(types(count), QSet<QString>());
    EXPECT_EQ(program().types(), QByteArrayList());
    const qint64 next = changed([this] { pasteboard().clear(); });
    EXPECT_EQ(read(next).status, ReadStatus::absent);
    expectThatTheNextCopyIsRead();
}

TEST_F(WaylandPasteboardWriteTest, anotherProgramsClearingOfOwnContentIsAChange)
{
    written({.plainText = "own"});
    // It owns the clipboard for a moment, which is two changes at the most.
    program().copyText("another's");
    const qint64 count = pasteboard().changeCount();
    program().takeBack();
    EXPECT_EQ(program().types(), QByteArrayList());
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(WaylandPasteboardWriteTest, keptContentIsServedWithTheMarker)
{
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    pasteboard().keepWhenOwnerLeaves(count, {{.plainText = "kept", .html = "<i>kept</i>"}});
    changed([this] { program().takeBack(); });
    EXPECT_EQ(program().paste("text/html"), "<i>kept</i>");
    EXPECT_EQ(program().paste(Pasteboard::markerType.toUtf8()), "1");
}

TEST_F(WaylandPasteboardWriteTest, keptContentDoesNotOverrunWhatAProgramCopiesInItsPlace)
{
    for (int round = 0; round < 20; ++round) {
        const qint64 count = copied({{"UTF8_STRING", "older"}});
        pasteboard().keepWhenOwnerLeaves(count, {{.plainText = "older"}});
        ASSERT_TRUE(types(count));
        const qint64 next = changed([this] { program().replace({{"UTF8_STRING", "newer"}}); });
        EXPECT_EQ(program().paste(), "newer");
        EXPECT_EQ(pasteboard().changeCount(), next);
        EXPECT_EQ(read(next).value, "newer");
    }
}

TEST_F(WaylandPasteboardWriteTest, nothingIsKeptThatIsEmpty)
{
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem()});
    program().takeBack();
    // The compositor tells the programs one after the other.
    ASSERT_TRUE(waitUntil([&] { return types(count) == std::nullopt; }));
    EXPECT_EQ(program().types(), QByteArrayList());
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(WaylandPasteboardWriteTest, whatIsClearedWhileItsSourceIsThereStaysEmpty)
{
    const qint64 count = copied({{"UTF8_STRING", "secret"}});
    const auto kept = keep(count, [](int) { return false; });
    program().takeBack();
    ASSERT_TRUE(waitUntil([&] { return kept.expired(); }));
    EXPECT_EQ(program().types(), QByteArrayList());
    EXPECT_EQ(pasteboard().changeCount(), count);
    expectThatTheNextCopyIsRead();
}

TEST_F(WaylandPasteboardWriteTest, whatIsClearedSomeTimeAfterItWasReadStaysEmpty)
{
    usePasteboard({.usedUp = std::chrono::milliseconds(0)});
    const qint64 count = copied({{"UTF8_STRING", "secret"}});
    ASSERT_EQ(read(count).value, "secret");
    const auto kept = keep(count, [](int) { return false; });
    program().takeBack();
    ASSERT_TRUE(waitUntil([&] { return kept.expired(); }));
    EXPECT_EQ(program().types(), QByteArrayList());
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(WaylandPasteboardWriteTest, keptContentIsOfferedIfItsSourceEndsShortlyAfterIt)
{
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    const auto kept = keep(count, [](int look) { return look > 3; });
    changed([this] { program().takeBack(); });
    EXPECT_EQ(program().paste(), "kept");
    EXPECT_TRUE(kept.expired());
}

TEST_F(WaylandPasteboardWriteTest, anOwnerUsedUpByAnothersReadIsNotStoodInForWhileItsSourceIsThere)
{
    const qint64 count = changed([this] {
        program().copy({{"UTF8_STRING", "once"}}, WaylandProgram::Life::leavesAfterOneRead);
    });
    const auto kept = keep(count, [](int) { return false; });
    WaylandProgram other(compositor().display());
    EXPECT_EQ(other.paste(), "once");
    ASSERT_TRUE(waitUntil([&] { return kept.expired(); }));
    EXPECT_EQ(other.types(), QByteArrayList());
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(WaylandPasteboardWriteTest, aNewerCopyEndsTheWaitForTheSourcesEnd)
{
    usePasteboard({.sourceEnd = std::chrono::hours(1)});
    std::atomic<bool> isLookedFor = false;
    const qint64 count = copied({{"UTF8_STRING", "older"}});
    const auto kept = keep(count, [&](int) {
        isLookedFor = true;
        return false;
    });
    program().takeBack();
    ASSERT_TRUE(waitUntil([&] { return isLookedFor.load(); }));
    EXPECT_FALSE(kept.expired());
    const qint64 next = copied({{"UTF8_STRING", "newer"}});
    EXPECT_TRUE(kept.expired());
    EXPECT_EQ(read(next).value, "newer");
}

TEST_F(WaylandPasteboardWriteTest, primaryIsOfferedOnRequestUntilAnotherProgramTakesIt)
{
    // At once, before the write has reached the compositor.
    ASSERT_TRUE(
        m_ticket = pasteboard().write({PasteboardItem{.plainText = "text", .html = "<b>"}}));
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    EXPECT_EQ(program().pastePrimary(), "text");
    EXPECT_EQ(program().pastePrimary("text/html"), "<b>");
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket))) << "also a second time";
    EXPECT_EQ(program().pastePrimary(), "text");
    EXPECT_TRUE(waitUntil([this] { return pasteboard().beginPaste(m_ticket, true); }));
    program().copyAsPrimary("other");
    EXPECT_EQ(program().pastePrimary(), "other");
    EXPECT_TRUE(waitUntil([this] { return !pasteboard().beginPaste(m_ticket, true); }));
    EXPECT_TRUE(pasteboard().beginPaste(m_ticket, false));
    EXPECT_EQ(program().paste(), "text");
}

TEST_F(WaylandPasteboardWriteTest, itIsKnownWhetherTheLastWriteIsText)
{
    const auto isText = [this](const PasteboardItem& item) {
        m_ticket = pasteboard().write({item});
        return pasteboard().isText(m_ticket);
    };
    EXPECT_TRUE(isText({.plainText = "text", .html = "<b>text</b>"}));
    const WriteTicket text = m_ticket;
    EXPECT_FALSE(isText({.plainText = "caption", .png = "png"}));
    EXPECT_FALSE(isText({.plainText = "/a", .fileURL = "file:///a"}));
    EXPECT_FALSE(pasteboard().isText(text)) << "it is not the last any more";
}

TEST_F(WaylandPasteboardWriteTest, primaryIsTheLastWrite)
{
    ASSERT_TRUE(m_ticket = pasteboard().write({PasteboardItem{.plainText = "first"}}));
    ASSERT_TRUE(m_ticket = pasteboard().write({PasteboardItem{.plainText = "second"}}));
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    EXPECT_EQ(program().pastePrimary(), "second");
    ASSERT_TRUE(m_ticket = pasteboard().write({PasteboardItem{.plainText = "third"}}));
    EXPECT_EQ(program().pastePrimary(), "second");
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    EXPECT_EQ(program().pastePrimary(), "third");
}

TEST_F(WaylandPasteboardWriteTest, primaryOutlivesTheLossOfTheClipboard)
{
    ASSERT_TRUE(m_ticket = pasteboard().write({PasteboardItem{.plainText = "text"}}));
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    copied({{"UTF8_STRING", "other"}});
    EXPECT_EQ(program().pastePrimary(), "text");
}

TEST_F(WaylandPasteboardWriteTest, primaryIsNotOfferedWithoutTheClipboard)
{
    EXPECT_FALSE(await(pasteboard().offerAsPrimary(m_ticket)));
    written({.plainText = "text"});
    copied({{"UTF8_STRING", "other"}});
    EXPECT_FALSE(await(pasteboard().offerAsPrimary(m_ticket)));
    EXPECT_EQ(program().pastePrimary(), std::nullopt);
}

TEST_F(WaylandPasteboardWriteTest, clearingGivesUpPrimaryTooButNotAnothers)
{
    ASSERT_TRUE(m_ticket = pasteboard().write({PasteboardItem{.plainText = "text"}}));
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    changed([this] { pasteboard().clear(); });
    EXPECT_EQ(program().pastePrimary(), std::nullopt);

    written({.plainText = "text"});
    EXPECT_TRUE(await(pasteboard().offerAsPrimary(m_ticket)));
    program().copyAsPrimary("other");
    changed([this] { pasteboard().clear(); });
    EXPECT_EQ(program().pastePrimary(), "other");
}

TEST_F(WaylandPasteboardWriteTest, whatOthersOfferAsPrimaryIsNotRead)
{
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    program().copyAsPrimary("other");
    EXPECT_EQ(read(count).value, "text");
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST(WaylandPasteboardPrimary, withoutPrimaryNothingIsOfferedThere)
{
    TestCompositor compositor({.hasPrimary = false});
    WaylandPasteboard pasteboard({.display = compositor.display(), .deadlines = {}});
    const WriteTicket ticket = pasteboard.write({PasteboardItem{.plainText = "text"}});
    EXPECT_TRUE(await(pasteboard.holds(ticket)));
    EXPECT_FALSE(await(pasteboard.offerAsPrimary(ticket)));
}

TEST_F(WaylandPasteboardWriteTest, primaryIsNotOfferedOnceTheCompositorIsGone)
{
    written({.plainText = "text"});
    compositor().freeze();
    auto waiting = pasteboard().offerAsPrimary(m_ticket);
    compositor().end();
    EXPECT_FALSE(await(std::move(waiting)));
    EXPECT_FALSE(await(pasteboard().offerAsPrimary(m_ticket)));
}

TEST_F(WaylandPasteboardWriteTest, whatItOwnsIsGoneWithIt)
{
    written({.plainText = "own"});
    endPasteboard();
    EXPECT_TRUE(waitUntil([this] { return program().types().isEmpty(); }));
}

} // namespace tessly::test
