#include "ReplacementFile.h"

#include "FileError.h"
#include "OrdinaryUser.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using testing::HasSubstr;

namespace tessly::test {
namespace {

using Creation = ReplacementFile::Creation;

class ReplacementFileTest : public testing::TestWithParam<Creation>
{
protected:
    [[nodiscard]] QByteArray path(const char* name = "file") const
    {
        return QFile::encodeName(m_folder.filePath(QLatin1StringView(name)));
    }
    [[nodiscard]] static QByteArray contents(const QByteArray& path)
    {
        QFile file(QFile::decodeName(path));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("absent");
    }
    static void put(const QByteArray& path, const QByteArray& bytes, mode_t mode = 0644)
    {
        QFile file(QFile::decodeName(path));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
        file.close();
        ASSERT_EQ(::chmod(path.constData(), mode), 0);
    }
    [[nodiscard]] static mode_t modeOf(const QByteArray& path)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(path.constData(), &status), 0);
        return status.st_mode & 07777;
    }
    [[nodiscard]] qsizetype filesInFolder() const
    {
        return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System).size();
    }
    static std::string refusal(const QByteArray& path)
    {
        try {
            const ReplacementFile file(path, GetParam());
        } catch (const FileError& error) {
            return error.what();
        }
        return "none";
    }

    QTemporaryDir m_folder;
};

INSTANTIATE_TEST_SUITE_P(
    , ReplacementFileTest, testing::Values(Creation::unnamedIfPossible, Creation::named));

TEST_P(ReplacementFileTest, ReplacesAFileOnceItIsWhole)
{
    put(path(), "old");
    ReplacementFile file(path(), GetParam());
    file.write("new ");
    file.write("bytes");
    EXPECT_EQ(contents(path()), "old");
    file.commit();
    EXPECT_EQ(contents(path()), "new bytes");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_P(ReplacementFileTest, IsItsOwnersAlone)
{
    put(path(), "old", 0666);
    const mode_t before = ::umask(0);
    ReplacementFile file(path(), GetParam());
    ReplacementFile other(path("other"), GetParam());
    ::umask(before);
    file.commit();
    other.commit();
    EXPECT_EQ(modeOf(path()), mode_t(0600));
    EXPECT_EQ(modeOf(path("other")), mode_t(0600));
}

TEST_P(ReplacementFileTest, LeavesWhatIsThereUnlessItIsCommitted)
{
    put(path(), "old");
    {
        ReplacementFile file(path(), GetParam());
        file.write("new");
    }
    EXPECT_EQ(contents(path()), "old");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_P(ReplacementFileTest, FollowsALinkToAFile)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"elsewhere"_s));
    put(path("elsewhere/file"), "old");
    ASSERT_EQ(::symlink("elsewhere/file", path().constData()), 0);
    ReplacementFile file(path(), GetParam());
    EXPECT_EQ(file.path(), QFileInfo(m_folder.filePath(u"elsewhere/file"_s)).canonicalFilePath());
    file.write("new");
    file.commit();
    EXPECT_EQ(contents(path("elsewhere/file")), "new");
    EXPECT_EQ(
        QFile::symLinkTarget(QFile::decodeName(path())), m_folder.filePath(u"elsewhere/file"_s));
}

TEST_P(ReplacementFileTest, TakesAnyName)
{
    for (const QByteArray& name : {QByteArray("\xff\xfe latin"), QByteArray(255, 'x')}) {
        const QByteArray file = QFile::encodeName(m_folder.path()) + '/' + name;
        ReplacementFile(file, GetParam()).commit();
        EXPECT_EQ(modeOf(file), mode_t(0600));
        ::unlink(file.constData());
    }
}

TEST_P(ReplacementFileTest, RefusesWhatNoFileCanReplace)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"folder"_s));
    ASSERT_EQ(::mkfifo(path("pipe").constData(), 0600), 0);
    ASSERT_EQ(::symlink("nowhere", path("link").constData()), 0);
    EXPECT_THAT(refusal(path("folder")), HasSubstr("Is a directory"));
    EXPECT_THAT(refusal(path("folder/")), HasSubstr("Is a directory"));
    EXPECT_THAT(refusal(path("pipe")), HasSubstr("it is not an ordinary file"));
    EXPECT_THAT(refusal("/dev/null"), HasSubstr("it is not an ordinary file"));
    EXPECT_THAT(refusal(path("link")), HasSubstr("it is a symbolic link that leads nowhere"));
    EXPECT_THAT(refusal(path("no/such/file")), HasSubstr("No such file or directory"));
    EXPECT_THAT(refusal(path("file/")), HasSubstr("No such file or directory"));
    EXPECT_THAT(refusal(path("pipe/file")), HasSubstr("Not a directory"));
}

TEST_P(ReplacementFileTest, AFolderThatCannotBeWrittenIsAnErrorAndTheFileStays)
{
    const OrdinaryUser user(m_folder.path());
    put(path(), "old");
    ASSERT_EQ(::chmod(QFile::encodeName(m_folder.path()).constData(), 0500), 0);
    EXPECT_THAT(refusal(path()), HasSubstr("Permission denied"));
    EXPECT_EQ(contents(path()), "old");
    ASSERT_EQ(::chmod(QFile::encodeName(m_folder.path()).constData(), 0700), 0);
}

} // namespace
} // namespace tessly::test
