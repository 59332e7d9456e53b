#include "AutostartLoginItem.h"

#include "FakeLoginItem.h"
#include "contract/LoginItemContract.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace tessly::test {

namespace {

using Status = LoginItem::Status;

const QString entryName = u"com.brackmoor.tessly.desktop"_s;

class InMemory
{
public:
    LoginItem& item() { return m_item; }
    void switchOff() { m_item.setStatus(Status::requiresApproval); }
    void makeRegisteringFail() { m_item.failRegistering(); }
    void makeUnregisteringFail() { m_item.failUnregistering(); }

private:
    FakeLoginItem m_item;
};

class InFolder
{
public:
    LoginItem& item() { return m_item; }
    QString path() const { return m_folder.filePath(u"config/autostart/"_s + entryName); }
    void write(const QByteArray& text)
    {
        QDir().mkpath(QFileInfo(path()).path());
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QByteArray text() const
    {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    void switchOff() { write(text() + "Hidden=true\n"); }
    void makeRegisteringFail()
    {
        // A file where the folder should be.
        QFile file(m_folder.filePath(u"config"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }
    void makeUnregisteringFail() { QDir().mkpath(path()); }

private:
    QTemporaryDir m_folder;
    AutostartLoginItem m_item{u"/usr/bin/tessly"_s, m_folder.filePath(u"config/autostart"_s)};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, LoginItemContract, InMemory);
INSTANTIATE_TYPED_TEST_SUITE_P(Autostart, LoginItemContract, InFolder);

class AutostartLoginItemTest : public testing::Test
{
protected:
    Status statusOf(const QByteArray& text)
    {
        m_folder.write(text);
        return m_folder.item().status();
    }

    InFolder m_folder;
};

TEST_F(AutostartLoginItemTest, TheEntryStartsTheInstalledProgram)
{
    m_folder.item().registerItem();
    const QByteArrayList lines = m_folder.text().split('\n');
    EXPECT_EQ(lines.first(), "[Desktop Entry]");
    EXPECT_TRUE(lines.contains("Type=Application"));
    EXPECT_TRUE(lines.contains("Name=Tessly"));
    EXPECT_TRUE(lines.contains("Exec=/usr/bin/tessly"));
}

TEST_F(AutostartLoginItemTest, OnlyTheUserCanReadTheEntryAndNothingElseIsLeftInTheFolder)
{
    m_folder.item().registerItem();
    struct stat status = {};
    ASSERT_EQ(stat(QFile::encodeName(m_folder.path()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    const QDir folder = QFileInfo(m_folder.path()).dir();
    EXPECT_THAT(
        folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        ElementsAre(entryName));
}

TEST_F(AutostartLoginItemTest, AnEntryThatIsNotHiddenIsEnabled)
{
    EXPECT_EQ(statusOf("[Desktop Entry]\nExec=tessly\n"), Status::enabled);
    EXPECT_EQ(statusOf("[Desktop Entry]\nHidden=false\n"), Status::enabled);
    EXPECT_EQ(
        statusOf("# first\n[Desktop Entry]\nX-GNOME-Autostart-enabled=true\n"), Status::enabled);
}

TEST_F(AutostartLoginItemTest, EitherSwitchTurnsTheEntryOff)
{
    EXPECT_EQ(statusOf("[Desktop Entry]\nHidden=true\n"), Status::requiresApproval);
    EXPECT_EQ(
        statusOf("[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n"), Status::requiresApproval);
    EXPECT_EQ(
        statusOf("[Desktop Entry]\nHidden = true \nX-GNOME-Autostart-enabled=true\n"),
        Status::requiresApproval);
}

TEST_F(AutostartLoginItemTest, SwitchesInOtherGroupsAndValuesThatAreNoTruthSwitchNothing)
{
    EXPECT_EQ(
        statusOf("[Desktop Entry]\nExec=tessly\n[Desktop Action x]\nHidden=true\n"),
        Status::enabled);
    EXPECT_EQ(statusOf("[Desktop Entry]\nHidden=perhaps\n"), Status::enabled);
    EXPECT_EQ(statusOf("[Desktop Entry]\nX-GNOME-Autostart-enabled=\n"), Status::enabled);
}

TEST_F(AutostartLoginItemTest, WhatIsNoDesktopEntryIsNotFound)
{
    EXPECT_EQ(statusOf(""), Status::notFound);
    EXPECT_EQ(statusOf("[Other]\nHidden=true\n"), Status::notFound);
    EXPECT_EQ(statusOf("Hidden=true\n"), Status::notFound);
}

TEST_F(AutostartLoginItemTest, ALinkToNothingIsNoEntryAndIsReplaced)
{
    QDir().mkpath(QFileInfo(m_folder.path()).path());
    ASSERT_TRUE(QFile::link(u"/nonexistent/entry"_s, m_folder.path()));
    EXPECT_EQ(m_folder.item().status(), Status::notRegistered);
    m_folder.item().registerItem();
    EXPECT_EQ(m_folder.item().status(), Status::enabled);
}

TEST_F(AutostartLoginItemTest, ALinkToTheNullDeviceIsNotFoundAndIsReplaced)
{
    QDir().mkpath(QFileInfo(m_folder.path()).path());
    ASSERT_TRUE(QFile::link(u"/dev/null"_s, m_folder.path()));
    EXPECT_EQ(m_folder.item().status(), Status::notFound);
    m_folder.item().registerItem();
    EXPECT_EQ(m_folder.item().status(), Status::enabled);
    EXPECT_FALSE(QFileInfo(m_folder.path()).isSymLink());
}

TEST_F(AutostartLoginItemTest, TheFolderIsTheUsersAutostartFolder)
{
    const QTemporaryDir home;
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()));
    AutostartLoginItem item(u"/usr/bin/tessly"_s);
    item.registerItem();
    if (before.isNull()) {
        qunsetenv("XDG_CONFIG_HOME");
    } else {
        qputenv("XDG_CONFIG_HOME", before);
    }
    EXPECT_TRUE(QFile::exists(home.filePath(u"autostart/"_s + entryName)));
}

} // namespace

} // namespace tessly::test
