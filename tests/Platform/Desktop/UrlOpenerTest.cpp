#include "UrlOpener.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

/// One program, which writes the URL it is given to a file, and the schemes it is there for.
class UrlOpenerTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        // GIO reads these once in the life of a process.
        s_folder = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", s_folder->path().toUtf8());
        qputenv("XDG_CONFIG_HOME", s_folder->path().toUtf8());
        qputenv("XDG_DATA_DIRS", "/nonexistent");
        ASSERT_TRUE(QDir(s_folder->path()).mkpath(u"applications"_s));
        write(
            u"applications/opener.desktop"_s,
            "[Desktop Entry]\nType=Application\nName=Opener\n"
            "Exec=sh -c \"printf %%s \\\\$1 > '" +
                out().toUtf8() + ".part'; mv '" + out().toUtf8() + ".part' '" + out().toUtf8() +
                "'\" sh %u\n"
                "MimeType=x-scheme-handler/tessly-test;text/plain;inode/directory;\n");
        write(
            u"applications/broken.desktop"_s,
            "[Desktop Entry]\nType=Application\nName=Broken\nExec=sh \"unbalanced\n"
            "MimeType=x-scheme-handler/tessly-broken;\n");
        write(
            u"mimeapps.list"_s,
            "[Default Applications]\nx-scheme-handler/tessly-test=opener.desktop\n"
            "text/plain=opener.desktop\ninode/directory=opener.desktop\n");
    }
    static void TearDownTestSuite() { s_folder.reset(); }
    void SetUp() override { QFile::remove(out()); }

    static QString out() { return s_folder->filePath(u"out"_s); }

    static QByteArray opened()
    {
        EXPECT_TRUE(waitUntil([] { return QFile::exists(out()); }));
        QFile file(out());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    static void write(const QString& name, const QByteArray& content)
    {
        QFile file(s_folder->filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    static inline std::unique_ptr<QTemporaryDir> s_folder;
};

TEST_F(UrlOpenerTest, startsTheProgramOfTheScheme)
{
    EXPECT_TRUE(openWithDesktop(QUrl(u"tessly-test:page?a=b%20c"_s)));
    EXPECT_EQ(opened(), "tessly-test:page?a=b%20c");
}

TEST_F(UrlOpenerTest, startsTheProgramOfAFilesType)
{
    const QUrl folder = QUrl::fromLocalFile(QDir::tempPath());
    EXPECT_TRUE(openWithDesktop(folder));
    // GIO hands a local file's path to a program that takes either.
    EXPECT_EQ(opened(), QDir::tempPath().toUtf8());
}

TEST_F(UrlOpenerTest, opensNothingThatThereIsNoProgramFor)
{
    EXPECT_FALSE(openWithDesktop(QUrl(u"x-apple.systempreferences:com.apple.preference"_s)));
    EXPECT_FALSE(openWithDesktop(QUrl(u"tessly-other:page"_s)));
    EXPECT_FALSE(openWithDesktop(QUrl()));
    EXPECT_FALSE(openWithDesktop(QUrl(u"/no/scheme"_s)));
}

} // namespace
} // namespace tessly::test
