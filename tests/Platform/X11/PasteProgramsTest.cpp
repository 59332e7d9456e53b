#include "TestSupport.h"
#include "X11Desktop.h"
#include "X11KeyEventPoster.h"
#include "X11Pasteboard.h"
#include "X11Workspace.h"
#include "XClient.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly::test {
namespace {

constexpr std::uint8_t capsLock = XCB_MOD_MASK_LOCK;
constexpr std::uint8_t numLock = XCB_MOD_MASK_2;

/// A way the user's keyboard may be when a paste is due.
struct Situation
{
    QString name;
    QStringList layout = {u"us"_s};
    std::uint8_t group = 0;
    std::uint8_t lockedMods = 0;
    std::vector<xcb_keycode_t> heldKeys = {};
};

const std::vector<Situation>& situations()
{
    static const std::vector<Situation> all = {
        {.name = u"us"_s},
        {.name = u"caps"_s, .lockedMods = capsLock},
        {.name = u"num"_s, .lockedMods = numLock},
        {.name = u"both locks"_s, .lockedMods = capsLock | numLock},
        {.name = u"Alt and Shift held"_s, .heldKeys = {64, 50}},
        {.name = u"Super and Control held"_s, .heldKeys = {133, 37}},
        {.name = u"de"_s, .layout = {u"de"_s}},
        {.name = u"fr"_s, .layout = {u"fr"_s}},
        {.name = u"dvorak"_s, .layout = {u"us(dvorak)"_s}},
        {.name = u"us of us,ru"_s, .layout = {u"us,ru"_s}, .group = 0},
        {.name = u"ru of us,ru"_s, .layout = {u"us,ru"_s}, .group = 1},
        {.name = u"ru of us,ru with caps"_s,
         .layout = {u"us,ru"_s},
         .group = 1,
         .lockedMods = capsLock},
        {.name = u"gr of gr,us"_s, .layout = {u"gr,us"_s}, .group = 0},
        {.name = u"ru"_s, .layout = {u"ru"_s}},
        {.name = u"ru with both locks"_s, .layout = {u"ru"_s}, .lockedMods = capsLock | numLock},
        {.name = u"gr"_s, .layout = {u"gr"_s}},
    };
    return all;
}

/// Pastes into real programs, whatever the state of the keyboard.
class PasteProgramsTest : public testing::Test
{
protected:
    XSession& session() { return m_session; }
    QString path(const QString& name) { return m_folder.filePath(name); }

    void start(const QString& name, const QStringList& arguments = {})
    {
        m_program = m_session.start(name, arguments);
        ASSERT_TRUE(waitUntil(
            [&] {
                const auto front = m_workspace.frontmostApplication();
                return front && front->isActive();
            },
            20s));
    }

    PostResult paste(WriteTicket content)
    {
        X11KeyEventPoster poster(
            m_desktop, PasteClipboard::of(m_pasteboard), m_pasteboard.ownerWindow(),
            {.releaseWait = 50ms});
        return await(poster.postPaste(m_workspace.frontmostApplication(), content));
    }

    void pasteIn(const Situation& situation)
    {
        const WriteTicket content =
            m_pasteboard.write({{.plainText = situation.name.toUtf8() + '\n'}});
        ASSERT_TRUE(content);
        m_session.run(u"setxkbmap"_s, situation.layout);
        m_client.lock(situation.lockedMods, situation.group);
        for (const auto key : situation.heldKeys) {
            m_client.pressOnKeyboard(key);
        }
        EXPECT_EQ(paste(content), PostResult::posted);
        const auto state = m_client.keyboardState();
        EXPECT_EQ(state.lockedMods, situation.lockedMods);
        EXPECT_EQ(state.lockedGroup, situation.group);
        EXPECT_TRUE(m_client.heldKeys().empty());
        for (const auto key : situation.heldKeys) {
            m_client.releaseOnKeyboard(key);
        }
        // Programs look keys up in the layout that is there when they get to it.
        EXPECT_TRUE(waitUntil([&] { return m_pasteboard.fetchCount() > 0; }));
        m_client.lock(0, 0);
        m_session.run(u"setxkbmap"_s, {u"us"_s});
    }

    /// Pastes in every situation, and each time waits for the program to have written it to "out".
    void pasteEverywhere(const std::function<void()>& save)
    {
        QByteArray expected;
        const auto written = [&] {
            QFile file(path(u"out"_s));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        for (const auto& situation : situations()) {
            SCOPED_TRACE(situation.name.toStdString());
            pasteIn(situation);
            expected += situation.name.toUtf8() + '\n';
            ASSERT_TRUE(waitUntil([&] {
                save();
                return written() == expected;
            })) << written().toStdString();
        }
    }

    void pasteIntoEditor(const QString& name)
    {
        ASSERT_TRUE(QFile(path(u"out"_s)).open(QIODevice::WriteOnly));
        start(name, {path(u"out"_s)});
        // An editor may be in front before it has read its file, and takes text as another then.
        ASSERT_TRUE(waitUntil([this] { return title().contains("/out"); }, 20s));
        pasteEverywhere([this] { m_session.run(u"xdotool"_s, {u"key"_s, u"ctrl+s"_s}); });
    }

private:
    QByteArray title()
    {
        return m_session.run(u"xdotool"_s, {u"getactivewindow"_s, u"getwindowname"_s});
    }

    XSession m_session;
    XClient m_client{m_session.display()};
    X11Desktop m_desktop{m_session.display().toStdString()};
    X11Workspace m_workspace{m_desktop};
    X11Pasteboard m_pasteboard{{.display = m_session.display().toStdString(), .deadlines = {}}};
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_program;
};

TEST_F(PasteProgramsTest, gtk)
{
    pasteIntoEditor(u"mousepad"_s);
}

TEST_F(PasteProgramsTest, qt)
{
    pasteIntoEditor(u"featherpad"_s);
}

TEST_F(PasteProgramsTest, xterm)
{
    start(u"xterm"_s, {u"-e"_s, u"sh"_s, u"-c"_s, u"cat > '"_s + path(u"out"_s) + u"'"_s});
    pasteEverywhere([] {});
}

} // namespace
} // namespace tessly::test
