#include "PanelKeyMap.h"

#include <gtest/gtest.h>

#include <vector>

namespace tessly {
namespace {

using Modifiers = Qt::KeyboardModifiers;

const Modifiers none = Qt::NoModifier;
const Modifiers shift = Qt::ShiftModifier;
const Modifiers ctrl = Qt::ControlModifier;
const Modifiers alt = Qt::AltModifier;
const Modifiers meta = Qt::MetaModifier;
const Modifiers keypad = Qt::KeypadModifier;

const std::vector<Modifiers> combinations = {
    none,
    shift,
    ctrl,
    alt,
    meta,
    shift | ctrl,
    shift | alt,
    ctrl | alt,
    alt | meta,
    shift | meta,
    ctrl | meta,
    keypad,
    shift | keypad,
    ctrl | keypad,
    shift | ctrl | alt | meta,
    Qt::GroupSwitchModifier,
};

TEST(PanelKeyMap, ArrowsMoveTheSelectionWhateverIsHeld)
{
    for (const Modifiers modifiers : combinations) {
        EXPECT_EQ(panelAction(Qt::Key_Up, modifiers), PanelAction::selectPrevious) << modifiers;
        EXPECT_EQ(panelAction(Qt::Key_Down, modifiers), PanelAction::selectNext) << modifiers;
    }
}

TEST(PanelKeyMap, TheUpperRowPastesByPositionWithAltAndShiftAlone)
{
    EXPECT_EQ(directPastePosition(Qt::Key_1, alt | shift), 1);
    EXPECT_EQ(directPastePosition(Qt::Key_9, alt | shift), 9);
    EXPECT_EQ(directPastePosition(Qt::Key_0, alt | shift), 10);
    EXPECT_EQ(directPastePosition(Qt::Key_A, alt | shift), std::nullopt);
    EXPECT_EQ(directPastePosition(Qt::Key_1, alt | shift | keypad), std::nullopt);
    for (const Modifiers modifiers : combinations) {
        if (modifiers != (alt | shift)) {
            EXPECT_EQ(directPastePosition(Qt::Key_1, modifiers), std::nullopt) << modifiers;
        }
    }
}

TEST(PanelKeyMap, ReturnPastes)
{
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        EXPECT_EQ(panelAction(key, none), PanelAction::paste);
        EXPECT_EQ(panelAction(key, keypad), PanelAction::paste);
    }
}

TEST(PanelKeyMap, OnlyShiftAlonePastesPlainText)
{
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        EXPECT_EQ(panelAction(key, shift), PanelAction::pastePlainText);
        EXPECT_EQ(panelAction(key, shift | keypad), PanelAction::pastePlainText);
        EXPECT_EQ(panelAction(key, shift | Qt::GroupSwitchModifier), PanelAction::pastePlainText);
        for (const Modifiers modifiers :
             {ctrl, alt, meta, shift | alt, shift | ctrl, shift | meta, ctrl | alt}) {
            EXPECT_EQ(panelAction(key, modifiers), PanelAction::paste) << modifiers;
        }
    }
}

TEST(PanelKeyMap, EscapeClosesWhateverIsHeld)
{
    for (const Modifiers modifiers : combinations) {
        EXPECT_EQ(panelAction(Qt::Key_Escape, modifiers), PanelAction::close) << modifiers;
    }
}

TEST(PanelKeyMap, PWithCtrlAloneTogglesThePin)
{
    for (const Modifiers modifiers : combinations) {
        const bool isCtrlAlone = modifiers == ctrl || modifiers == (ctrl | keypad);
        EXPECT_EQ(
            panelAction(Qt::Key_P, modifiers),
            isCtrlAlone ? std::optional(PanelAction::togglePin) : std::nullopt)
            << modifiers;
    }
}

TEST(PanelKeyMap, BackspaceWithCtrlAloneDeletes)
{
    for (const Modifiers modifiers : combinations) {
        const bool isCtrlAlone = modifiers == ctrl || modifiers == (ctrl | keypad);
        EXPECT_EQ(
            panelAction(Qt::Key_Backspace, modifiers),
            isCtrlAlone ? std::optional(PanelAction::deleteSelected) : std::nullopt)
            << modifiers;
    }
}

TEST(PanelKeyMap, SpaceWithCtrlAloneSwitchesThePreview)
{
    for (const Modifiers modifiers : combinations) {
        const bool isCtrlAlone = modifiers == ctrl || modifiers == (ctrl | keypad);
        EXPECT_EQ(
            panelAction(Qt::Key_Space, modifiers),
            isCtrlAlone ? std::optional(PanelAction::togglePreview) : std::nullopt)
            << modifiers;
    }
}

TEST(PanelKeyMap, EveryOtherKeyIsLeftToTheSearchField)
{
    for (const int key :
         {Qt::Key_A, Qt::Key_V, Qt::Key_0, Qt::Key_9, Qt::Key_Tab, Qt::Key_Left, Qt::Key_Right,
          Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Delete, Qt::Key_F1,
          Qt::Key_CapsLock, Qt::Key_Shift, Qt::Key_unknown}) {
        for (const Modifiers modifiers : combinations) {
            EXPECT_EQ(panelAction(key, modifiers), std::nullopt) << key << ' ' << modifiers;
        }
    }
}

} // namespace
} // namespace tessly
