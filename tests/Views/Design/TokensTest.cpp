#include "Tokens.h"

#include "Contrast.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QSignalSpy>

#include <string>
#include <vector>

namespace tessly {
namespace {

constexpr double textContrast = 4.5;
constexpr double symbolContrast = 3;

QPalette palette(const QColor& window, const QColor& windowText, const QColor& highlight)
{
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, windowText);
    palette.setColor(QPalette::Highlight, highlight);
    return palette;
}

QPalette lightPalette(const QColor& highlight)
{
    return palette(QColor(0xEF, 0xEF, 0xEF), Qt::black, highlight);
}

QPalette darkPalette(const QColor& highlight)
{
    return palette(QColor(0x20, 0x20, 0x20), Qt::white, highlight);
}

struct Pair
{
    std::string name;
    QColor front;
    QColor behind;
    double contrast;
};

/// Everything that is to be read, with what is behind it.
std::vector<Pair> pairs(const TokenColors& c)
{
    const QColor panel = c.panel;
    const auto on = [&panel](const QColor& fill) { return over(fill, panel); };
    return {
        {"text", c.text, panel, textContrast},
        {"secondary text and placeholder", c.secondaryText, panel, textContrast},
        {"text of a chip", c.text, on(c.chip), textContrast},
        {"text of a chip under the pointer", c.text, over(c.buttonHover, on(c.chip)), textContrast},
        {"text of the selected chip", c.onAccent, c.accent, textContrast},
        {"preview of the selected row", c.onAccent, c.accent, textContrast},
        {"metadata of the selected row", c.onAccentSecondary, c.accent, textContrast},
        {"key cap of a row", c.text, on(c.keyCap), textContrast},
        {"key cap of the selected row", c.onAccent, over(c.keyCapOnAccent, c.accent), textContrast},
        {"key cap of a hint", c.text, on(c.hintCap), textContrast},
        {"information", c.onBanner, c.bannerInformation, textContrast},
        {"warning", c.onBanner, c.bannerWarning, textContrast},
        {"error", c.onBanner, c.bannerError, textContrast},
        {"menu and tool tip", c.text, c.popup, textContrast},
        {"destructive command", c.destructive, c.popup, textContrast},
        {"current command", c.onAccent, c.accent, textContrast},
        {"selected text of the search field", c.onAccent, c.accent, textContrast},
        {"symbol of the header", c.accentSymbol, panel, symbolContrast},
        {"symbol of a row", c.accentSymbol, on(c.tile), symbolContrast},
        {"symbol of the selected row", c.onAccent, over(c.tileOnAccent, c.accent), symbolContrast},
        {"pin", c.pin, panel, symbolContrast},
        {"row of a form", c.text, c.group, textContrast},
        {"value of a row", c.secondaryText, c.group, textContrast},
        {"all is well", c.good, c.group, textContrast},
        {"something is to be done", c.attention, c.group, textContrast},
        {"key cap of a form", c.text, over(c.keyCap, c.group), textContrast},
        {"heading of a section", c.secondaryText, c.window, textContrast},
        {"version", c.tertiaryText, c.window, textContrast},
        {"title of a tab", c.secondaryText, c.window, textContrast},
        {"title of a tab under the pointer", c.secondaryText, over(c.buttonHover, c.window),
         textContrast},
        {"title of the selected tab", c.accentText, over(c.chip, c.window), textContrast},
        {"button", c.text, c.button, textContrast},
        {"destructive button", c.destructive, c.button, textContrast},
        {"prominent button", c.onAccent, c.accent, textContrast},
        {"message of an alert", c.secondaryText, c.popup, textContrast},
        {"keys of a menu's line", c.secondaryText, c.popup, textContrast},
        {"keys of the current line", c.onAccentSecondary, c.accent, textContrast},
        {"symbol of a window", c.accentSymbol, c.window, symbolContrast},
        {"ring around a row's control", c.focus, c.group, symbolContrast},
        {"ring around a tab", c.focus, over(c.chip, c.window), symbolContrast},
        {"ring around an alert's button", c.focus, c.popup, symbolContrast},
        {"switch that is off", c.switchOffBorder, c.group, symbolContrast},
        {"switch that is on", c.switchOn, c.group, symbolContrast},
        {"thumb of a switch that is on", c.switchThumb, c.switchOn, symbolContrast},
        {"thumb of a switch that is off", c.switchThumb, c.switchOff, symbolContrast},
    };
}

const std::vector<QColor> accents = {
    QColor(0x30, 0x8C, 0xC6), // the toolkit's own
    QColor(0x00, 0x7A, 0xFF),
    QColor(0x3D, 0xAE, 0xE9),
    QColor(0xE9, 0x54, 0x20),
    QColor(0x26, 0xA2, 0x69),
    QColor(0x91, 0x41, 0xAC),
    Qt::yellow,
    Qt::cyan,
    Qt::white,
    Qt::black,
    Qt::gray,
    QColor(0x20, 0x20, 0x20, 0x40),
};

TEST(TokensTest, EverythingCanBeReadUnderAnyAccent)
{
    for (const QColor& accent : accents) {
        for (const QPalette& desktop : {lightPalette(accent), darkPalette(accent)}) {
            for (const Pair& pair : pairs(tokenColors(desktop))) {
                EXPECT_GE(contrastRatio(over(pair.front, pair.behind), pair.behind), pair.contrast)
                    << pair.name << " with accent " << accent.name(QColor::HexArgb).toStdString()
                    << " on " << desktop.color(QPalette::Window).name().toStdString();
            }
        }
    }
}

TEST(TokensTest, InTheDarkASwitchThatIsOnOutshinesOneThatIsOff)
{
    for (const QColor& accent : accents) {
        const TokenColors colors = tokenColors(darkPalette(accent));
        EXPECT_GT(
            contrastRatio(colors.switchOn, Qt::black), contrastRatio(colors.switchOff, Qt::black))
            << accent.name(QColor::HexArgb).toStdString();
    }
}

TEST(TokensTest, ABannerIsToldFromTheSelectedRowUnderIt)
{
    for (const QColor& accent : accents) {
        for (const QPalette& desktop : {lightPalette(accent), darkPalette(accent)}) {
            const TokenColors colors = tokenColors(desktop);
            EXPECT_GT(contrastRatio(colors.accent, colors.bannerInformation), 1.2)
                << accent.name(QColor::HexArgb).toStdString();
        }
    }
}

TEST(TokensTest, EdgesAreOpaque)
{
    for (const QPalette& desktop : {lightPalette(Qt::blue), darkPalette(Qt::blue)}) {
        EXPECT_EQ(tokenColors(desktop).border.alpha(), 255);
    }
}

TEST(TokensTest, LightAndDarkFollowTheWindowsOfTheDesktop)
{
    const TokenColors light = tokenColors(lightPalette(Qt::blue));
    const TokenColors dark = tokenColors(darkPalette(Qt::blue));
    EXPECT_GT(contrastRatio(light.panel, Qt::black), 15);
    EXPECT_LT(contrastRatio(dark.panel, Qt::black), 2);
}

TEST(TokensTest, AnAccentThatCanBeReadIsTakenAsItIs)
{
    const QColor deep(0x0B, 0x3D, 0x91);
    EXPECT_EQ(tokenColors(lightPalette(deep)).accent, deep);
    EXPECT_EQ(tokenColors(darkPalette(deep)).accent, deep);
}

TEST(TokensTest, AnAccentKeepsItsHue)
{
    const QColor orange(0xE9, 0x54, 0x20);
    const TokenColors colors = tokenColors(lightPalette(orange));
    EXPECT_NE(colors.accent, orange) << "white could not be read on it";
    EXPECT_NEAR(colors.accent.hslHueF(), orange.hslHueF(), 0.01);
}

TEST(TokensTest, ColoursChangeWithThePaletteWhileTheProgramRuns)
{
    const QPalette before = QGuiApplication::palette();
    QGuiApplication::setPalette(lightPalette(Qt::blue));
    const Tokens tokens;
    const QSignalSpy changed(&tokens, &Tokens::colorChanged);
    const QColor light = tokens.color().panel;
    QGuiApplication::setPalette(darkPalette(Qt::blue));
    EXPECT_GE(changed.size(), 1);
    EXPECT_NE(tokens.color().panel, light);
    EXPECT_EQ(tokens.color().panel, tokenColors(darkPalette(Qt::blue)).panel);
    QGuiApplication::setPalette(before);
}

TEST(TokensTest, MotionIsShort)
{
    EXPECT_LT(TokenMetrics().appearance, 150);
}

TEST(ContrastTest, IsThatOfTheStandard)
{
    EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21, 0.01);
    EXPECT_NEAR(contrastRatio(Qt::white, Qt::black), 21, 0.01);
    EXPECT_NEAR(contrastRatio(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
    EXPECT_NEAR(contrastRatio(Qt::red, Qt::red), 1, 0.001);
}

TEST(ContrastTest, WhatLiesOverIsMixedByItsOpacity)
{
    EXPECT_EQ(over(withOpacity(Qt::white, 0), Qt::black), QColor(Qt::black));
    EXPECT_EQ(over(Qt::white, Qt::black), QColor(Qt::white));
    EXPECT_NEAR(over(withOpacity(Qt::white, 0.5F), Qt::black).redF(), 0.5, 0.01);
}

} // namespace
} // namespace tessly
