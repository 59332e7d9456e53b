#include "DesktopEntries.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

class DesktopEntriesTest : public testing::Test
{
protected:
    [[nodiscard]] QString home() const { return m_folder.filePath(u"home"_s); }
    [[nodiscard]] QString system() const { return m_folder.filePath(u"system"_s); }
    DesktopEntries& entries() { return m_entries; }

    static void write(const QString& path, const QByteArray& content)
    {
        const QDir folder = QFileInfo(path).dir();
        ASSERT_TRUE(folder.mkpath(u"."_s));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
        file.close();
        // Two changes within one tick of the file system's clock leave the same time behind: take
        // one of our own that only goes forward.
        static time_t tick = 1'000'000'000;
        const timespec times[2] = {
            {.tv_sec = ++tick, .tv_nsec = 0}, {.tv_sec = tick, .tv_nsec = 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, QFile::encodeName(folder.path()).constData(), times, 0), 0);
    }

    static QByteArray entry(const QByteArray& name, const QByteArray& more = {})
    {
        return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=no-such-program\n" +
               more;
    }

    static QString idOf(const std::optional<DesktopEntry>& found)
    {
        return found ? found->id : QString();
    }

private:
    QTemporaryDir m_folder;
    DesktopEntries m_entries{QStringList{home(), system()}};
};

TEST_F(DesktopEntriesTest, findsAnEntryByIDWithAndWithoutSuffix)
{
    write(system() + u"/org.example.Editor.desktop"_s, entry("Editor"));

    const DesktopEntry expected{u"org.example.Editor"_s, u"Editor"_s, false};
    EXPECT_EQ(entries().withID(u"org.example.Editor"_s), expected);
    EXPECT_EQ(entries().withID(u"org.example.Editor.desktop"_s), expected);
    EXPECT_EQ(entries().withID(u"org.example.Other"_s), std::nullopt);
}

TEST_F(DesktopEntriesTest, findsAnEntryWhoseProgramIsNotInThePath)
{
    write(system() + u"/sandboxed.desktop"_s, entry("Sandboxed", "TryExec=/no/such/program\n"));

    EXPECT_EQ(idOf(entries().withID(u"sandboxed"_s)), u"sandboxed"_s);
}

TEST_F(DesktopEntriesTest, ignoresLetterCase)
{
    write(system() + u"/org.example.Editor.desktop"_s, entry("Editor", "StartupWMClass=EdItor\n"));

    EXPECT_EQ(idOf(entries().withID(u"Org.example.editor"_s)), u"org.example.Editor"_s);
    EXPECT_EQ(idOf(entries().withStartupWMClass(u"editor"_s)), u"org.example.Editor"_s);
}

TEST_F(DesktopEntriesTest, namesFilesInSubfoldersByTheirPath)
{
    write(system() + u"/kde/deep/tool.desktop"_s, entry("Tool", "StartupWMClass=Tool\n"));

    EXPECT_EQ(idOf(entries().withID(u"kde-deep-tool"_s)), u"kde-deep-tool"_s);
    EXPECT_EQ(idOf(entries().withStartupWMClass(u"Tool"_s)), u"kde-deep-tool"_s);
}

TEST_F(DesktopEntriesTest, prefersTheUsersEntryOfAnID)
{
    write(system() + u"/editor.desktop"_s, entry("System's", "StartupWMClass=Old\n"));
    write(home() + u"/editor.desktop"_s, entry("User's", "StartupWMClass=New\n"));

    EXPECT_EQ(entries().withID(u"editor"_s)->name, u"User's"_s);
    EXPECT_EQ(idOf(entries().withStartupWMClass(u"New"_s)), u"editor"_s);
    EXPECT_EQ(entries().withStartupWMClass(u"Old"_s), std::nullopt);
}

TEST_F(DesktopEntriesTest, hidesAnEntryThatTheUserDeleted)
{
    write(system() + u"/editor.desktop"_s, entry("Editor", "StartupWMClass=Editor\n"));
    write(home() + u"/editor.desktop"_s, entry("Editor", "StartupWMClass=Editor\nHidden=true\n"));

    EXPECT_EQ(entries().withID(u"editor"_s), std::nullopt);
    EXPECT_EQ(entries().withStartupWMClass(u"Editor"_s), std::nullopt);
}

TEST_F(DesktopEntriesTest, takesTheClassOfTheMainGroupOnly)
{
    write(
        system() + u"/editor.desktop"_s,
        entry(
            "Editor", "#StartupWMClass=Comment\nX-StartupWMClass=Other\nStartupWMClassic=Other\n"
                      "StartupWMClass = Editor \n\n[Desktop Action new]\nStartupWMClass=Action\n"));

    EXPECT_EQ(idOf(entries().withStartupWMClass(u"Editor"_s)), u"editor"_s);
    EXPECT_EQ(entries().withStartupWMClass(u"Comment"_s), std::nullopt);
    EXPECT_EQ(entries().withStartupWMClass(u"Other"_s), std::nullopt);
    EXPECT_EQ(entries().withStartupWMClass(u"Action"_s), std::nullopt);
    EXPECT_EQ(entries().withStartupWMClass(u""_s), std::nullopt);
}

TEST_F(DesktopEntriesTest, ofSeveralWithOneClassPrefersTheOneInMenusThenTheShortest)
{
    write(system() + u"/a.desktop"_s, entry("A", "StartupWMClass=App\nNoDisplay=true\n"));
    write(system() + u"/app-settings.desktop"_s, entry("Settings", "StartupWMClass=App\n"));
    write(system() + u"/app.desktop"_s, entry("App", "StartupWMClass=App\n"));

    EXPECT_EQ(idOf(entries().withStartupWMClass(u"App"_s)), u"app"_s);
}

TEST_F(DesktopEntriesTest, givesTheNameInTheUsersLanguage)
{
    write(
        system() + u"/editor.desktop"_s,
        entry("Text Editor", "Name[de]=Textbearbeitung\nName[fr]=Éditeur\n"));

    // GLib keeps the languages for as long as the variables stay the same.
    const QByteArray before = qgetenv("LANGUAGE");
    qputenv("LANGUAGE", "de");
    EXPECT_EQ(entries().withID(u"editor"_s)->name, u"Textbearbeitung"_s);
    qputenv("LANGUAGE", "fr_FR");
    EXPECT_EQ(entries().withID(u"editor"_s)->name, u"Éditeur"_s);
    qputenv("LANGUAGE", "it");
    EXPECT_EQ(entries().withID(u"editor"_s)->name, u"Text Editor"_s);
    qputenv("LANGUAGE", before);
}

TEST_F(DesktopEntriesTest, knowsTerminals)
{
    write(system() + u"/term.desktop"_s, entry("Term", "Categories=System;TerminalEmulator;\n"));
    write(system() + u"/editor.desktop"_s, entry("Editor", "Categories=NoTerminalEmulator;X\n"));

    EXPECT_TRUE(entries().withID(u"term"_s)->isTerminalEmulator);
    EXPECT_FALSE(entries().withID(u"editor"_s)->isTerminalEmulator);
}

TEST_F(DesktopEntriesTest, seesApplicationsThatAreInstalledLater)
{
    EXPECT_EQ(entries().withID(u"late"_s), std::nullopt);
    write(home() + u"/late.desktop"_s, entry("Late", "StartupWMClass=Late\n"));
    EXPECT_EQ(idOf(entries().withID(u"late"_s)), u"late"_s);
    write(home() + u"/later/one.desktop"_s, entry("One", "StartupWMClass=One\n"));
    write(home() + u"/two.desktop"_s, entry("Two", "StartupWMClass=Two\n"));
    EXPECT_EQ(idOf(entries().withStartupWMClass(u"One"_s)), u"later-one"_s);
    ASSERT_TRUE(QFile::remove(home() + u"/two.desktop"_s));
    EXPECT_EQ(entries().withStartupWMClass(u"Two"_s), std::nullopt);
}

TEST_F(DesktopEntriesTest, answersNothingForWhatIsNotAnApplicationsEntry)
{
    write(system() + u"/link.desktop"_s, "[Desktop Entry]\nType=Link\nName=Link\nURL=x:\n");
    write(system() + u"/empty.desktop"_s, {});
    write(system() + u"/binary.desktop"_s, QByteArray("\0\xff\n[Desktop Entry\n", 17));
    write(system() + u"/headless.desktop"_s, "StartupWMClass=Headless\n");
    write(system() + u"/big.desktop"_s, QByteArray(3 * 1024 * 1024, '['));
    ASSERT_EQ(mkfifo(QFile::encodeName(system() + u"/pipe.desktop"_s).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(system(), system() + u"/loop"_s));

    for (const auto& id :
         {u"link"_s, u"empty"_s, u"binary"_s, u"headless"_s, u"big"_s, u"pipe"_s, u""_s}) {
        EXPECT_EQ(entries().withID(id), std::nullopt) << id.toStdString();
    }
    EXPECT_EQ(entries().withStartupWMClass(u"Headless"_s), std::nullopt);
}

TEST_F(DesktopEntriesTest, doesNotLeaveTheFolders)
{
    write(home() + u"/../outside.desktop"_s, entry("Outside"));
    write(home() + u"/inside.desktop"_s, entry("Inside"));

    EXPECT_EQ(entries().withID(u"../outside"_s), std::nullopt);
    EXPECT_EQ(entries().withID(home() + u"/inside"_s), std::nullopt);
    EXPECT_EQ(idOf(entries().withID(u"inside"_s)), u"inside"_s);
}

TEST_F(DesktopEntriesTest, trustsWhatAWindowTellsOfItselfInOrder)
{
    write(system() + u"/org.example.App.desktop"_s, entry("By id"));
    write(system() + u"/web.desktop"_s, entry("By instance", "StartupWMClass=crx_1\n"));
    write(system() + u"/browser.desktop"_s, entry("By class", "StartupWMClass=Browser\n"));
    write(system() + u"/tool.desktop"_s, entry("By name"));

    const auto nameOf = [this](const QString& id, const QString& instance, const QString& name) {
        const auto found = entries().ofWindow(id, instance, name);
        return found ? found->name : QString();
    };
    EXPECT_EQ(nameOf(u"org.example.App"_s, u"crx_1"_s, u"Browser"_s), u"By id"_s);
    EXPECT_EQ(nameOf(u"org.example.None"_s, u"crx_1"_s, u"Browser"_s), u"By instance"_s);
    EXPECT_EQ(nameOf({}, u"window"_s, u"Browser"_s), u"By class"_s);
    EXPECT_EQ(nameOf({}, u"window"_s, u"Tool"_s), u"By name"_s);
    EXPECT_EQ(nameOf(u"Browser"_s, {}, {}), u"By class"_s);
    EXPECT_EQ(nameOf({}, {}, {}), QString());
}

} // namespace
} // namespace tessly::test
