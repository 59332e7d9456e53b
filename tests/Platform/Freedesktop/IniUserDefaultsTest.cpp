#include "IniUserDefaults.h"

#include "InlineExecutor.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "OrdinaryUser.h"
#include "PlantedFile.h"
#include "ThreadExecutor.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

class IniUserDefaultsTest : public testing::Test
{
protected:
    [[nodiscard]] QByteArray fileBytes() const
    {
        QFile file(m_path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void setFileBytes(const QByteArray& bytes) const
    {
        QFile file(m_path);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(m_path).path()));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    static mode_t mode(const QString& path)
    {
        struct stat status = {};
        EXPECT_EQ(stat(QFile::encodeName(path).constData(), &status), 0);
        return status.st_mode & 07777U;
    }

    static std::size_t warnings(const LogCapture& log)
    {
        return log.lines(u"com.brackmoor.tessly.IniUserDefaults"_s).size();
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(u"a/b/settings.ini"_s);
};

TEST_F(IniUserDefaultsTest, ReadingMakesNoFile)
{
    const IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    EXPECT_EQ(defaults.integer(u"key"_s), 0);
    EXPECT_FALSE(QFileInfo::exists(m_folder.filePath(u"a"_s)));
}

TEST_F(IniUserDefaultsTest, TheFirstWriteMakesPrivateFoldersAndAPrivateFile)
{
    const mode_t previous = umask(0);
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setInteger(u"key"_s, 5);
    umask(previous);
    EXPECT_EQ(fileBytes(), "[General]\nkey=5\n");
    EXPECT_EQ(mode(m_path), 0600U);
    EXPECT_EQ(mode(m_folder.filePath(u"a"_s)), 0700U);
    EXPECT_EQ(mode(m_folder.filePath(u"a/b"_s)), 0700U);
}

TEST_F(IniUserDefaultsTest, AFileThatOthersCouldReadIsPrivateAfterAWrite)
{
    setFileBytes("[General]\nkey=1\n");
    ASSERT_EQ(chmod(QFile::encodeName(m_path).constData(), 0644), 0);
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setInteger(u"key"_s, 2);
    EXPECT_EQ(mode(m_path), 0600U);
}

TEST_F(IniUserDefaultsTest, EveryChangeIsInTheFileAtOnce)
{
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setBoolean(u"flag"_s, true);
    EXPECT_EQ(fileBytes(), "[General]\nflag=true\n");
    defaults.setString(u"text"_s, u"one\ntwo"_s);
    EXPECT_EQ(fileBytes(), "[General]\nflag=true\ntext=one\\ntwo\n");
    defaults.remove(u"flag"_s);
    EXPECT_EQ(fileBytes(), "[General]\ntext=one\\ntwo\n");
}

TEST_F(IniUserDefaultsTest, ChangesThatPileUpAreWrittenTogether)
{
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& jobs = *executor;
    IniUserDefaults defaults(m_path, std::move(executor));
    defaults.setString(u"name"_s, u"a"_s);
    defaults.setString(u"name"_s, u"ab"_s);
    defaults.setInteger(u"count"_s, 3);
    EXPECT_EQ(defaults.string(u"name"_s), u"ab"_s);
    EXPECT_FALSE(QFileInfo::exists(m_path));
    ASSERT_TRUE(jobs.runOne());
    EXPECT_TRUE(fileBytes().contains("name=ab"));
    EXPECT_TRUE(fileBytes().contains("count=3"));
    QFile::remove(m_path);
    while (jobs.runOne()) {
    }
    EXPECT_FALSE(QFileInfo::exists(m_path)) << "nothing was left to write";
}

TEST_F(IniUserDefaultsTest, WhatWasChangedIsWrittenBeforeItGoes)
{
    IniUserDefaults(m_path, std::make_unique<ThreadExecutor>("settings")).setInteger(u"n"_s, 1);
    EXPECT_TRUE(fileBytes().contains("n=1"));
}

TEST_F(IniUserDefaultsTest, WritingPutsANewFileInTheOldOnesPlace)
{
    setFileBytes("[General]\nkey=1\n");
    QFile old(m_path);
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setInteger(u"key"_s, 2);
    EXPECT_EQ(old.readAll(), "[General]\nkey=1\n");
    EXPECT_EQ(fileBytes(), "[General]\nkey=2\n");
    EXPECT_EQ(
        QFileInfo(m_path).dir().entryList(QDir::Files | QDir::Hidden),
        QStringList{u"settings.ini"_s});
}

TEST_F(IniUserDefaultsTest, ForeignKeysAndGroupsAreKept)
{
    setFileBytes("[General]\nforeign=1\n[Window]\nkey=2\n");
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setInteger(u"key"_s, 3);
    EXPECT_EQ(fileBytes(), "[General]\nforeign=1\nkey=3\n[Window]\nkey=2\n");
}

TEST_F(IniUserDefaultsTest, WhatAnotherProgramWroteMeanwhileIsKeptButNotRead)
{
    setFileBytes("[General]\nkey=1\nother=1\n");
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    setFileBytes("[General]\nkey=7\nother=7\n[Window]\nwidth=9\n");
    EXPECT_EQ(defaults.integer(u"other"_s), 1);
    defaults.setInteger(u"key"_s, 2);
    EXPECT_EQ(defaults.integer(u"other"_s), 1);
    EXPECT_EQ(fileBytes(), "[General]\nkey=2\nother=7\n[Window]\nwidth=9\n");
}

TEST_F(IniUserDefaultsTest, ANonsenseFileReadsAsDefaultsAndStaysUntilASetterWrites)
{
    const QByteArray nonsense("\x89PNG\r\n\x1a\n\0\0]]\nmaxHistory\n", 25);
    setFileBytes(nonsense);
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.registerDefaults({{u"maxHistory"_s, 500}});
    EXPECT_EQ(defaults.integer(u"maxHistory"_s), 500);
    EXPECT_EQ(fileBytes(), nonsense);
    defaults.setInteger(u"maxHistory"_s, 20);
    EXPECT_EQ(
        IniUserDefaults(m_path, std::make_unique<InlineExecutor>()).integer(u"maxHistory"_s), 20);
}

TEST_F(IniUserDefaultsTest, ALinkToAFileElsewhereStaysALink)
{
    const QString elsewhere = m_folder.filePath(u"elsewhere.ini"_s);
    m_path = m_folder.filePath(u"settings.ini"_s);
    ASSERT_TRUE(QFile(elsewhere).open(QIODevice::WriteOnly));
    ASSERT_TRUE(QFile::link(elsewhere, m_path));
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setInteger(u"key"_s, 1);
    defaults.setInteger(u"key"_s, 2);
    EXPECT_TRUE(QFileInfo(m_path).isSymLink());
    EXPECT_EQ(IniUserDefaults(elsewhere, std::make_unique<InlineExecutor>()).integer(u"key"_s), 2);
}

TEST_F(IniUserDefaultsTest, AChangeThatCannotBeWrittenIsLoggedOnceAndStaysInMemory)
{
    const LogCapture log;
    QFile obstacle(m_folder.filePath(u"a"_s));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setInteger(u"key"_s, 5);
    defaults.setString(u"text"_s, u"secret"_s);
    EXPECT_EQ(defaults.integer(u"key"_s), 5);
    EXPECT_EQ(defaults.string(u"text"_s), u"secret"_s);
    EXPECT_EQ(warnings(log), 1U);
}

TEST_F(IniUserDefaultsTest, WhatCouldNotBeWrittenGoesOutWithTheNextChange)
{
    const LogCapture log;
    QFile file(m_folder.filePath(u"a"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setInteger(u"one"_s, 1);
    defaults.remove(u"two"_s);
    ASSERT_TRUE(file.remove());
    setFileBytes("[General]\ntwo=2\n");
    defaults.setInteger(u"three"_s, 3);
    EXPECT_EQ(IniUserDefaults(m_path, std::make_unique<InlineExecutor>()).integer(u"one"_s), 1);
    EXPECT_EQ(IniUserDefaults(m_path, std::make_unique<InlineExecutor>()).integer(u"two"_s), 0);
    EXPECT_EQ(IniUserDefaults(m_path, std::make_unique<InlineExecutor>()).integer(u"three"_s), 3);
    ASSERT_TRUE(QDir(m_folder.filePath(u"a"_s)).removeRecursively());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    defaults.setInteger(u"one"_s, 4);
    EXPECT_EQ(warnings(log), 2U) << "writing had worked again in between";
}

TEST_F(IniUserDefaultsTest, WhatStandsInThePlaceOfTheFileIsNotReplaced)
{
    const LogCapture log;
    ASSERT_TRUE(QDir().mkpath(m_path));
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    defaults.setInteger(u"key"_s, 5);
    EXPECT_EQ(defaults.integer(u"key"_s), 5);
    EXPECT_TRUE(QFileInfo(m_path).isDir());
    EXPECT_EQ(warnings(log), 2U) << "one for reading, one for writing";
}

TEST_F(IniUserDefaultsTest, AFileThatIsNotThereCouldBeRead)
{
    EXPECT_TRUE(IniUserDefaults(m_path, std::make_unique<InlineExecutor>()).couldBeRead());
    setFileBytes("[General]\nkey=1\n");
    EXPECT_TRUE(IniUserDefaults(m_path, std::make_unique<InlineExecutor>()).couldBeRead());
}

TEST_F(IniUserDefaultsTest, WhatCannotBeReadIsSaidAndStaysAsItIs)
{
    const OrdinaryUser user(m_folder.path());
    setFileBytes("[General]\nkey=2\n");
    for (const QString& closed : {m_path, QFileInfo(m_path).path()}) {
        const LogCapture log;
        ASSERT_EQ(chmod(QFile::encodeName(closed).constData(), 0), 0);
        IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
        EXPECT_FALSE(defaults.couldBeRead()) << closed.toStdString();
        defaults.setInteger(u"other"_s, 3);
        ASSERT_EQ(chmod(QFile::encodeName(closed).constData(), 0700), 0);
        EXPECT_EQ(fileBytes(), "[General]\nkey=2\n");
        EXPECT_EQ(warnings(log), 2U) << "one for reading, one for writing";
    }
}

TEST_F(IniUserDefaultsTest, ADiskThatFailsIsNoEmptyFile)
{
    const LogCapture log;
    ASSERT_TRUE(QDir().mkpath(QFileInfo(m_path).path()));
    // An ordinary file whose beginning cannot be read: nothing is mapped at address 0.
    ASSERT_TRUE(QFile::link(u"/proc/self/mem"_s, m_path));
    EXPECT_FALSE(IniUserDefaults(m_path, std::make_unique<InlineExecutor>()).couldBeRead());
    EXPECT_EQ(warnings(log), 1U);
}

TEST_F(IniUserDefaultsTest, ALinkThatLeadsNowhereIsNoEmptyFile)
{
    const LogCapture log;
    m_path = m_folder.filePath(u"settings.ini"_s);
    const QString elsewhere = m_folder.filePath(u"elsewhere.ini"_s);
    ASSERT_TRUE(QFile::link(elsewhere, m_path));
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    EXPECT_FALSE(defaults.couldBeRead());
    EXPECT_EQ(warnings(log), 1U);
    // What is there once the disk is may say otherwise.
    defaults.setString(u"key"_s, u"value"_s);
    EXPECT_FALSE(QFile::exists(elsewhere));
    EXPECT_EQ(warnings(log), 2U);
}

TEST_F(IniUserDefaultsTest, AFolderThatLeadsNowhereIsNoEmptyFile)
{
    const LogCapture log;
    const QString folder = m_folder.filePath(u"settings"_s);
    ASSERT_TRUE(QFile::link(m_folder.filePath(u"elsewhere"_s), folder));
    m_path = folder + u"/settings.ini"_s;
    EXPECT_FALSE(IniUserDefaults(m_path, std::make_unique<InlineExecutor>()).couldBeRead());
    EXPECT_EQ(warnings(log), 1U);
}

TEST_F(IniUserDefaultsTest, WhatIsPlantedInThePlaceOfTheFileIsNeitherReadNorChanged)
{
    for (const Planted what : {Planted::pipe, Planted::folder, Planted::fileOfAnother}) {
        const LogCapture log;
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"elsewhere"_s);
        const PlantedFile planted(what, file, folder.filePath(u"victim"_s));
        if (!planted.isPlanted()) {
            continue;
        }
        // Also by way of a link, and of a link to that.
        const QString link = folder.filePath(u"link"_s);
        const QString second = folder.filePath(u"second"_s);
        ASSERT_TRUE(QFile::link(file, link));
        ASSERT_TRUE(QFile::link(link, second));
        for (const QString& path : {file, link, second}) {
            IniUserDefaults defaults(path, std::make_unique<InlineExecutor>());
            EXPECT_FALSE(defaults.couldBeRead());
            defaults.setInteger(u"key"_s, 5);
        }
        EXPECT_EQ(warnings(log), 6U);
        planted.expectUntouched();
    }
}

TEST_F(IniUserDefaultsTest, AFileOfTheSystemsIsReadAndNotReplaced)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can make one";
    }
    const LogCapture log;
    setFileBytes("[General]\nkey=1\n");
    const OrdinaryUser user(m_folder.path());
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    EXPECT_EQ(defaults.integer(u"key"_s), 1);
    defaults.setInteger(u"key"_s, 2);
    EXPECT_EQ(fileBytes(), "[General]\nkey=1\n");
    EXPECT_EQ(warnings(log), 1U);
}

TEST_F(IniUserDefaultsTest, APipeInThePlaceOfTheFileHoldsNobodyUp)
{
    const LogCapture log;
    ASSERT_TRUE(QDir().mkpath(QFileInfo(m_path).path()));
    ASSERT_EQ(mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
    IniUserDefaults defaults(m_path, std::make_unique<InlineExecutor>());
    EXPECT_EQ(defaults.string(u"key"_s), std::nullopt);
    EXPECT_EQ(warnings(log), 1U);
}

} // namespace
} // namespace tessly::test
