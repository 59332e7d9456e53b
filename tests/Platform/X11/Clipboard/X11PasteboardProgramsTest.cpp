#include "TestSupport.h"
#include "X11Pasteboard.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// A GTK editor with a file open, driven by keys.
class X11PasteboardProgramsTest : public testing::Test
{
protected:
    static constexpr qint64 noLimit = qint64{1} << 30;

    void open(const QByteArray& text)
    {
        const QString path = m_folder.filePath(u"text"_s);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(text), text.size());
        file.close();
        m_editor = m_session.start(u"mousepad"_s, {u"--disable-server"_s, path});
        m_session.run(
            u"xdotool"_s, {u"search"_s, u"--sync"_s, u"--onlyvisible"_s, u"--class"_s,
                           u"mousepad"_s, u"windowactivate"_s, u"--sync"_s});
    }

    void press(const QStringList& keys)
    {
        m_session.run(u"xdotool"_s, QStringList{u"key"_s} + keys);
    }

    /// Copies all of the editor's text until it is this; the content's change count.
    qint64 copiedOnceItIs(const QByteArray& text)
    {
        const qint64 before = pasteboard().changeCount();
        qint64 count = before;
        EXPECT_TRUE(waitUntil(
            [&] {
                // Its answer to these keys, not to the ones before.
                press({u"ctrl+a"_s, u"ctrl+c"_s});
                const bool isChanged = waitUntil(
                    [&] { return pasteboard().changeCount() != count; }, std::chrono::seconds(2));
                if (!isChanged) {
                    return false;
                }
                count = pasteboard().changeCount();
                return count != before &&
                       await(pasteboard().read(count, Flavour::plainText, noLimit)).value == text;
            },
            std::chrono::seconds(30)));
        return count;
    }

    [[nodiscard]] X11Pasteboard& pasteboard() { return m_pasteboard; }
    void quitEditor()
    {
        press({u"ctrl+q"_s});
        EXPECT_TRUE(waitUntil([this] { return m_editor->state() == QProcess::NotRunning; }));
    }

private:
    XSession m_session;
    QTemporaryDir m_folder;
    X11Pasteboard m_pasteboard{
        X11Pasteboard::Options{.display = m_session.display().toStdString(), .deadlines = {}}};
    std::unique_ptr<QProcess> m_editor;
};

} // namespace

TEST_F(X11PasteboardProgramsTest, aGTKEditorsTextIsReadWithTheLineEndsThatItHas)
{
    open("erste Zeile\nzweite Zeile: ü €\n");
    copiedOnceItIs("erste Zeile\nzweite Zeile: ü €\n");
}

TEST_F(X11PasteboardProgramsTest, aGTKEditorPastesWhatIsWritten)
{
    open("");
    // Enough for an incremental transfer, and not too much for the editor.
    const QByteArray text = QByteArray("wörd €\n").repeated(40'000);
    const qint64 before = pasteboard().changeCount();
    ASSERT_TRUE(pasteboard().write({PasteboardItem{.plainText = text}}));
    ASSERT_TRUE(waitUntil([&] { return pasteboard().changeCount() != before; }));
    press({u"ctrl+v"_s});
    copiedOnceItIs(text);
}

TEST_F(X11PasteboardProgramsTest, aGTKEditorsCopyOutlivesTheEditor)
{
    open("text");
    const qint64 count = copiedOnceItIs("text");
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "text"}});
    quitEditor();
    ASSERT_TRUE(waitUntil([&] { return pasteboard().changeCount() != count; }));
    const auto types = await(pasteboard().types(pasteboard().changeCount()));
    ASSERT_TRUE(types);
    EXPECT_TRUE(types->contains(Pasteboard::markerType));
}

} // namespace tessly::test
