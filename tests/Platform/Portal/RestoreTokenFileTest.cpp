#include "RestoreTokenFile.h"

#include "LogCapture.h"
#include "ManualExecutor.h"
#include "PlantedFile.h"
#include "ThreadExecutor.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

namespace {

class RestoreTokenFileTest : public testing::Test
{
protected:
    RestoreTokenFileTest()
        : m_before(::umask(0))
    {
    }
    ~RestoreTokenFileTest() override { ::umask(m_before); }

    QString read()
    {
        QFuture<QString> token = m_file->read();
        restart();
        EXPECT_TRUE(token.isFinished());
        return token.result();
    }
    void write(const QString& token)
    {
        m_file->write(token);
        restart();
    }
    /// Waits for what is being done.
    void restart()
    {
        m_file.reset();
        m_file = make();
    }
    [[nodiscard]] std::unique_ptr<RestoreTokenFile> make() const
    {
        return std::make_unique<RestoreTokenFile>(
            m_path, std::make_unique<ThreadExecutor>("token"));
    }
    QStringList files()
    {
        return QDir(m_folder.path())
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    }
    QByteArray contents()
    {
        QFile file(m_path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    mode_t m_before;
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(u"token"_s);
    std::unique_ptr<RestoreTokenFile> m_file = make();
};

TEST_F(RestoreTokenFileTest, WhereThereIsNoneNoneIsRead)
{
    const LogCapture log;
    EXPECT_EQ(read(), QString());
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.RestoreTokenFile"_s), IsEmpty());
}

TEST_F(RestoreTokenFileTest, ATokenIsReadAsWritten)
{
    write(u"abc-1"_s);
    EXPECT_EQ(read(), u"abc-1"_s);
    write(u"d"_s);
    EXPECT_EQ(read(), u"d"_s);
    EXPECT_EQ(contents(), "d");
}

TEST_F(RestoreTokenFileTest, ItIsItsOwnersAlone)
{
    for (const QString& token : {u"first"_s, u"second"_s}) {
        write(token);
        struct stat about = {};
        ASSERT_EQ(::stat(QFile::encodeName(m_path).constData(), &about), 0);
        EXPECT_EQ(about.st_mode & 0777U, 0600U);
        EXPECT_THAT(files(), ElementsAre(u"token"_s)) << "nothing is left beside it";
    }
}

TEST_F(RestoreTokenFileTest, WhatAKilledProgramLeftIsNoObstacle)
{
    QFile left(m_path + u".new"_s);
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.write("half a tok");
    left.close();
    write(u"whole"_s);
    EXPECT_EQ(contents(), "whole");
    EXPECT_THAT(files(), ElementsAre(u"token"_s));
}

TEST_F(RestoreTokenFileTest, ALinkIsReplacedAndNotFollowed)
{
    const QString elsewhere = m_folder.filePath(u"elsewhere"_s);
    ASSERT_TRUE(QFile::link(elsewhere, m_path + u".new"_s));
    ASSERT_TRUE(QFile::link(elsewhere, m_path));
    write(u"secret"_s);
    EXPECT_FALSE(QFile::exists(elsewhere));
    EXPECT_EQ(read(), u"secret"_s);
}

TEST_F(RestoreTokenFileTest, NoTokenLeavesNoFile)
{
    write(u"abc"_s);
    write(QString());
    EXPECT_THAT(files(), IsEmpty());
    const LogCapture log;
    write(QString());
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.RestoreTokenFile"_s), IsEmpty());
}

TEST_F(RestoreTokenFileTest, WhatCannotBeWrittenIsSaidWithoutTheToken)
{
    m_path = m_folder.filePath(u"missing/token"_s);
    restart();
    const LogCapture log;
    write(u"s3cret"_s);
    const auto lines = log.lines(u"com.brackmoor.tessly.RestoreTokenFile"_s);
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines[0].level, QtWarningMsg);
    EXPECT_THAT(lines[0].text.toStdString(), HasSubstr("No such file"));
    EXPECT_THAT(lines[0].text.toStdString(), testing::Not(HasSubstr("s3cret")));
}

TEST_F(RestoreTokenFileTest, WhatIsNoFileHoldsNobodyUp)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(m_path).constData(), 0600), 0);
    EXPECT_EQ(read(), QString());
    ASSERT_EQ(::unlink(QFile::encodeName(m_path).constData()), 0);
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"token"_s));
    const LogCapture log;
    EXPECT_EQ(read(), QString());
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.RestoreTokenFile"_s), SizeIs(1));
}

TEST_F(RestoreTokenFileTest, WhatIsPlantedIsNoToken)
{
    for (const Planted what : everyPlanted) {
        const QTemporaryDir folder;
        m_path = folder.filePath(u"token"_s);
        const PlantedFile planted(what, m_path, folder.filePath(u"victim"_s));
        if (!planted.isPlanted()) {
            continue;
        }
        restart();
        const LogCapture log;
        EXPECT_EQ(read(), QString());
        EXPECT_THAT(log.lines(u"com.brackmoor.tessly.RestoreTokenFile"_s), SizeIs(1));
        planted.expectUntouched();
    }
}

TEST_F(RestoreTokenFileTest, TheCallerDoesNotWait)
{
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& work = *executor;
    RestoreTokenFile file(m_path, std::move(executor));
    file.write(u"abc"_s);
    const QFuture<QString> token = file.read();
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_FALSE(token.isFinished());
    while (work.runOne()) {
    }
    ASSERT_TRUE(token.isFinished());
    EXPECT_EQ(token.result(), u"abc"_s);
}

} // namespace

} // namespace tessly::test
