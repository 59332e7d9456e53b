#include "PasteChord.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

TEST(PasteChordTest, applicationsPasteByControlV)
{
    EXPECT_EQ(pasteChord(u"org.xfce.mousepad"_s, u"Mousepad"_s, false), PasteChord::controlV);
    EXPECT_EQ(pasteChord({}, {}, false), PasteChord::controlV);
}

TEST(PasteChordTest, whatTheDesktopKnowsAsATerminalPastesByControlShiftV)
{
    EXPECT_EQ(pasteChord(u"org.example.Term"_s, u"Term"_s, true), PasteChord::controlShiftV);
}

TEST(PasteChordTest, knownTerminalsNeedNoEntry)
{
    for (const auto& id :
         {u"org.gnome.Terminal"_s, u"org.gnome.Console"_s, u"org.kde.konsole"_s, u"foot"_s,
          u"kitty"_s, u"Alacritty"_s, u"xfce4-terminal"_s, u"org.wezfurlong.wezterm"_s}) {
        EXPECT_EQ(pasteChord(id, {}, false), PasteChord::controlShiftV) << id.toStdString();
    }
    EXPECT_EQ(pasteChord({}, u"Gnome-terminal"_s, false), PasteChord::controlShiftV);
    EXPECT_EQ(pasteChord({}, u"Xfce4-terminal"_s, false), PasteChord::controlShiftV);
}

TEST(PasteChordTest, xtermAndItsKinPasteByShiftInsertThoughTheyAreTerminals)
{
    for (const auto& name : {u"XTerm"_s, u"UXTerm"_s, u"URxvt"_s, u"Rxvt"_s, u"KOI8RXTerm"_s}) {
        EXPECT_EQ(pasteChord({}, name, false), PasteChord::shiftInsert) << name.toStdString();
        EXPECT_EQ(pasteChord(u"entry"_s, name, true), PasteChord::shiftInsert);
    }
    EXPECT_EQ(pasteChord(u"debian-xterm"_s, u"MyTerm"_s, true), PasteChord::shiftInsert);
}

TEST(PasteChordTest, editorsToWhichControlVIsACommandPasteByShiftInsert)
{
    for (const auto& name : {u"Emacs"_s, u"Gvim"_s, u"nvim-qt"_s, u"XEmacs"_s}) {
        EXPECT_EQ(pasteChord({}, name, false), PasteChord::shiftInsert) << name.toStdString();
        EXPECT_EQ(pasteChord(name, {}, false), PasteChord::shiftInsert) << name.toStdString();
    }
    EXPECT_EQ(pasteChord(u"emacsclient"_s, u"Emacs"_s, false), PasteChord::shiftInsert);
    EXPECT_EQ(pasteChord(u"vim"_s, u"foot"_s, true), PasteChord::controlShiftV)
        << "in a terminal it is the terminal that pastes";
}

TEST(PasteChordTest, aNameThatOnlyContainsATerminalsNameIsNoTerminal)
{
    EXPECT_EQ(pasteChord(u"org.example.footnotes"_s, u"xtermlike"_s, false), PasteChord::controlV);
}

} // namespace
} // namespace tessly::test
