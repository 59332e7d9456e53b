#pragma once

#include <QString>

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace tessly::test {

/// A system tray as unusual as a test wants it, with one place of 30 by 30 pixels at (400, 300).
/// Throws std::runtime_error when the server does not answer.
class TestTray
{
public:
    struct Look
    {
        /// Windows with an opacity of their own, if the server has such.
        bool isTranslucent = false;
        /// The ordinary icons' colour: red, green, blue, sixteen bits each; empty: not told.
        std::vector<std::uint32_t> colour = {};
        std::uint32_t background = 0;
    };

    explicit TestTray(const QString& display);
    TestTray(const QString& display, Look look);
    /// Goes as a program that crashed.
    ~TestTray();
    TestTray(const TestTray&) = delete;
    TestTray& operator=(const TestTray&) = delete;

    /// Takes up what has been asked for; whether it has an icon now.
    bool takeIcons();
    /// The windows that asked to be taken in so far, whether they were or not.
    const std::vector<xcb_window_t>& asked();
    [[nodiscard]] xcb_window_t icon() const { return m_icon; }
    void resize(std::uint16_t side);
    void move(std::int16_t x, std::int16_t y);
    /// Puts the icon out onto the screen.
    void putOut();
    void destroyIcon();
    /// Tells of a click of its own making, as trays do that draw icons somewhere else.
    void passClickOn(xcb_button_t button);
    /// The text of a property of the icon.
    [[nodiscard]] QByteArray property(const char* name);
    /// What is to be seen at a place of the icon, as 0xrrggbb.
    [[nodiscard]] std::uint32_t pixel(std::int16_t x, std::int16_t y);
    [[nodiscard]] xcb_visualid_t iconVisual();

private:
    [[nodiscard]] xcb_atom_t atom(const char* name);
    [[nodiscard]] xcb_visualid_t translucentVisual() const;
    void drain();

    xcb_connection_t* m_connection = nullptr;
    const xcb_screen_t* m_screen = nullptr;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    xcb_window_t m_icon = XCB_WINDOW_NONE;
    std::vector<xcb_window_t> m_asked;
    std::uint16_t m_side = 30;
};

} // namespace tessly::test
