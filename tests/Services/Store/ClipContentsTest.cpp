#include "FaultVFS.h"
#include "HistoryFile.h"
#include "LogCapture.h"
#include "QtPrinting.h"

#include <gtest/gtest.h>

#include <map>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// What a list of fifty holds of a clip; the stored list of no files is a part of it.
constexpr qint64 share =
    ClipStore::heldContent / ClipStore::usualClips - QByteArrayView("[]").size();

class ClipContents : public testing::Test
{
protected:
    ClipContents() { history.open(); }

    Clip save(const ClipPayload& payload)
    {
        return history.database().save(payload, std::nullopt, std::nullopt, 10'000);
    }

    [[nodiscard]] std::vector<Clip> list(qint64 limit, const std::vector<Clip>& held = {})
    {
        return history.database().search({}, std::nullopt, limit, held);
    }

    static qint64 heldBytes(const std::vector<Clip>& clips)
    {
        qint64 bytes = 0;
        for (const Clip& clip : clips) {
            bytes += clip.payload.held() != nullptr ? clip.payload.held()->byteCount() : 0;
        }
        return bytes;
    }

    HistoryFile history;
};

/// Of that many bytes, one kind after the other.
ClipPayload payloadOf(qint64 bytes, int number)
{
    QByteArray content(bytes, static_cast<char>('a' + number % 26));
    content.replace(0, 10, QByteArray::number(1'000'000'000 + number));
    switch (number % 5) {
    case 0:
        return ClipPayload({.plainText = content});
    case 1:
        return ClipPayload({.imagePNG = content});
    case 2:
        return ClipPayload({.rtf = content});
    case 3:
        return ClipPayload({.plainText = "https://example.org/" + content.mid(20)});
    default:
        return ClipPayload({.plainText = content.first(bytes / 2), .html = content.mid(bytes / 2)});
    }
}

} // namespace

TEST_F(ClipContents, ofAListAreBoundedWhateverTheirSizes)
{
    std::map<QUuid, ClipPayload> saved;
    std::vector<QUuid> order;
    int number = 0;
    for (const qint64 bytes : {qint64(100), share - 1, share, share + 1, 4 * share, share / 2}) {
        for (int i = 0; i < 10; ++i) {
            const ClipPayload payload = payloadOf(bytes, number++);
            order.insert(order.begin(), save(payload).id);
            saved.emplace(order.front(), payload);
        }
    }
    for (const qint64 limit : {10, 50, -1}) {
        const std::vector<Clip> clips = list(limit);
        ASSERT_EQ(clips.size(), limit < 0 ? order.size() : static_cast<std::size_t>(limit));
        EXPECT_LE(heldBytes(clips), ClipStore::heldContent) << limit;
        for (std::size_t i = 0; i < clips.size(); ++i) {
            ASSERT_EQ(clips[i].id, order[i]) << "the newest first";
            const ClipPayload& payload = saved.at(clips[i].id);
            EXPECT_EQ(clips[i].payload, ListedPayload(payload));
            EXPECT_EQ(clips[i].payload.kind(), payload.kind());
            EXPECT_EQ(clips[i].payload.previewLine(), payload.previewLine());
            EXPECT_EQ(clips[i].payload.contentHash(), payload.contentHash());
            // Sixty leave each a little less.
            const qint64 bytes = payload.byteCount();
            if (limit > 0) {
                EXPECT_EQ(clips[i].payload.held() != nullptr, bytes <= share) << bytes;
            }
            EXPECT_EQ(history.database().payload(clips[i].id), payload);
        }
    }
}

TEST_F(ClipContents, thatAreHeldAreLetGoWhereManyMoreAreListed)
{
    for (int i = 0; i < 100; ++i) {
        save(payloadOf(i < 50 ? share / 2 - 1 : share, i));
    }
    const std::vector<Clip> held = list(50);
    EXPECT_EQ(heldBytes(held), 50 * share);
    const std::vector<Clip> all = list(-1, held);
    ASSERT_EQ(all.size(), 100U);
    EXPECT_LE(heldBytes(all), ClipStore::heldContent);
}

TEST_F(ClipContents, thatAListLeftOutAreNotLookedAtAgain)
{
    save(payloadOf(share + 1, 0));
    const std::vector<Clip> held = list(50);
    history.execute("UPDATE clips SET preview = 'changed'");
    EXPECT_EQ(list(50, held), held);
    EXPECT_EQ(list(50, held).front().payload.previewLine(), held.front().payload.previewLine());
}

TEST_F(ClipContents, comeBackAsTheyWere)
{
    const QByteArray much(share + 1, 'x');
    for (const ClipPayload& payload : {
             ClipPayload({.plainText = "x"}),
             ClipPayload({.plainText = much, .rtf = "", .html = "", .imagePNG = ""}),
             ClipPayload({.rtf = "", .html = much}),
             ClipPayload({.plainText = "", .imagePNG = QByteArray("\0\xff\0", 3) + much}),
             ClipPayload({.plainText = "text", .fileURLs = {"file:///a", "file:///" + much}}),
         }) {
        const Clip clip = save(payload);
        EXPECT_EQ(history.database().payload(clip.id), payload);
    }
}

TEST_F(ClipContents, arePreviewedFromTheFileAsFromMemory)
{
    const QByteArray much(share + 1, 'x');
    const QByteArray emoji = QByteArray("🎉").repeated(share);
    for (const ClipPayload& payload : {
             ClipPayload({.plainText = "", .html = ""}),
             ClipPayload({.plainText = "a\xC3\xA9"}),
             ClipPayload({.plainText = much}),
             ClipPayload({.plainText = "x" + emoji, .rtf = much, .html = much}),
             ClipPayload({.rtf = much}),
             ClipPayload({.rtf = much, .html = "<p>" + emoji}),
             ClipPayload({.html = "<style>" + much}),
             ClipPayload({.plainText = much, .imagePNG = QByteArray("\0\xff\0", 3) + much}),
             ClipPayload({.plainText = "a", .imagePNG = ""}),
             ClipPayload(
                 {.plainText = "a", .imagePNG = "b", .fileURLs = {"file:///a", "file:///b"}}),
             ClipPayload({.fileURLs = {""}}),
         }) {
        const Clip clip = save(payload);
        EXPECT_EQ(history.database().preview(clip.id), ClipPreview::of(payload));
    }
}

TEST_F(ClipContents, arePreviewedWithTheFirstFilesOfALongList)
{
    QByteArrayList urls;
    for (int i = 0; i < 50'000; ++i) {
        urls.append("file:///home/anna/some%20folder/caf\xC3\xA9/" + QByteArray::number(i));
    }
    const auto preview = history.database().preview(save(ClipPayload({.fileURLs = urls})).id);
    ASSERT_TRUE(preview.has_value());
    EXPECT_TRUE(preview->areFilesCut);
    EXPECT_GT(preview->fileURLs.size(), 10'000);
    EXPECT_LT(preview->fileURLs.size(), urls.size());
    EXPECT_EQ(preview->fileURLs, urls.first(preview->fileURLs.size()));
}

TEST_F(ClipContents, arePreviewedWithAFirstFileHoweverLongItIs)
{
    const QByteArray longest =
        "file:///" + QByteArray(static_cast<qsizetype>(ClipPreview::fileListAtMost), 'x');
    const ClipPayload payload({.plainText = "x", .fileURLs = {longest, "file:///short"}});
    EXPECT_EQ(history.database().preview(save(payload).id), ClipPreview::of(payload));
}

TEST_F(ClipContents, ofAClipThatIsGoneAreNone)
{
    const Clip clip = save(payloadOf(share + 1, 1));
    ASSERT_TRUE(history.database().payload(clip.id).has_value());
    history.database().remove(clip.id);
    EXPECT_EQ(history.database().payload(clip.id), std::nullopt);
    EXPECT_EQ(history.database().preview(clip.id), std::nullopt);
}

TEST_F(ClipContents, thatCannotBeReadAreAnError)
{
    const Clip clip = save(payloadOf(share + 1, 1));
    // A row, and no content that anybody could paste.
    history.execute("UPDATE clips SET image_png = 17");
    EXPECT_THROW((void)history.database().payload(clip.id), ClipStoreError);
    EXPECT_THROW((void)history.database().preview(clip.id), ClipStoreError);
    history.execute("UPDATE clips SET image_png = NULL, html = 17");
    EXPECT_THROW((void)history.database().preview(clip.id), ClipStoreError);
    history.execute("DROP TABLE clips");
    EXPECT_THROW((void)history.database().payload(clip.id), ClipStoreError);
    EXPECT_THROW((void)history.database().preview(clip.id), ClipStoreError);
}

TEST_F(ClipContents, areWholeOrAnErrorWhereverTheDiskFails)
{
    history.close();
    const LogCapture log;
    FaultVFS vfs;
    history.open();
    // More than SQLite keeps in memory.
    const ClipPayload payload = payloadOf(8 * 1024 * 1024, 1);
    const QUuid id = save(payload).id;
    int errors = 0;
    for (int number = 1;; number += 1 + number / 2) {
        history.open();
        vfs.fail(FaultVFS::Call::read, FaultVFS::Fault::io, number, FaultVFS::Span::once);
        std::optional<ClipPayload> read;
        try {
            read = history.database().payload(id);
            EXPECT_EQ(read, payload);
        } catch (const ClipStoreError& error) {
            EXPECT_EQ(error.errorCase(), ClipStoreError::Case::execute);
            ++errors;
        }
        const bool hasFailed = vfs.hasFailed();
        vfs.failNothing();
        EXPECT_NE(read.has_value(), hasFailed) << number;
        if (!hasFailed) {
            break;
        }
    }
    EXPECT_GT(errors, 5);
    EXPECT_EQ(history.database().payload(id), payload);
    history.close();
}

TEST_F(ClipContents, arePreviewedAsTheyAreOrNotAtAllWhereverTheDiskFails)
{
    history.close();
    const LogCapture log;
    FaultVFS vfs;
    history.open();
    const ClipPayload payload({.html = QByteArray("<p>text</p>").repeated(1'000'000)});
    const QUuid id = save(payload).id;
    int errors = 0;
    for (int number = 1;; number += 1 + number / 2) {
        history.open();
        vfs.fail(FaultVFS::Call::read, FaultVFS::Fault::io, number, FaultVFS::Span::once);
        try {
            EXPECT_EQ(history.database().preview(id), ClipPreview::of(payload));
            EXPECT_FALSE(vfs.hasFailed()) << number;
        } catch (const ClipStoreError& error) {
            EXPECT_EQ(error.errorCase(), ClipStoreError::Case::execute);
            EXPECT_TRUE(vfs.hasFailed()) << number;
            ++errors;
        }
        const bool hasFailed = vfs.hasFailed();
        vfs.failNothing();
        if (!hasFailed) {
            break;
        }
    }
    EXPECT_GT(errors, 5);
    history.close();
}

TEST_F(ClipContents, ofAHistoryThatIsNotCheckedArePreviewedOnlyIfTheyAreWhatWasStored)
{
    const ClipPayload payload = payloadOf(share + 1, 0);
    const ClipPayload other = payloadOf(share + 1, 5);
    const QUuid id = save(payload).id;
    const QUuid otherID = save(other).id;
    history.close();
    // As where pages were mixed up, far behind what is shown.
    history.execute("UPDATE clips SET plain_text = plain_text || 'x' WHERE rowid = 1");
    ClipDatabase unchecked(history.path(), SQLiteConnection::Access::readOnly);
    EXPECT_THROW((void)unchecked.preview(id), ClipStoreError);
    EXPECT_EQ(unchecked.preview(otherID), ClipPreview::of(other));
    const QUuid waiting = QUuid::createUuid();
    unchecked.setWaiting({WaitingCopy{
        .id = waiting,
        .time = 1,
        .payload = ClipPayload({.plainText = "waiting"}),
        .sourceAppName = {},
        .sourceBundleID = {}}});
    EXPECT_EQ(unchecked.preview(waiting), ClipPreview({.size = 7, .text = "waiting"}));
}

TEST_F(ClipContents, areNotReadToCountARepeat)
{
    const ClipPayload payload = payloadOf(share + 1, 1);
    const Clip first = save(payload);
    ASSERT_NE(first.payload.held(), nullptr);
    const Clip again = save(payload);
    EXPECT_EQ(again.id, first.id);
    EXPECT_EQ(again.copyCount, 2);
    EXPECT_EQ(again.payload.held(), nullptr);
    EXPECT_EQ(again.payload, first.payload);
}

TEST_F(ClipContents, ofTheClipAtAPositionAreLeftOutAsInAList)
{
    save(payloadOf(share + 1, 1));
    save(payloadOf(share, 1));
    EXPECT_NE(history.database().clip(1)->payload.held(), nullptr);
    EXPECT_EQ(history.database().clip(2)->payload.held(), nullptr);
}

} // namespace tessly::test
