#pragma once

#include <QByteArray>
#include <QRect>
#include <QString>

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessly::test {

/// A client of the X server that does what a test says: shows windows that tell of themselves what
/// the test wants, notes the keys they get, holds keys down, grabs, and plays window manager.
/// Throws std::runtime_error when the server does not answer.
class XClient
{
public:
    /// What a window tells of itself; empty parts are left out.
    struct Look
    {
        /// WM_CLASS as it stands, with its zero bytes.
        QByteArray windowClass;
        QByteArray gtkApplicationID = {};
        std::optional<std::uint32_t> processID = {};
        bool isUnmanaged = false;
        xcb_window_t parent = XCB_WINDOW_NONE;
        std::int16_t x = 50;
        std::int16_t y = 50;
    };
    struct Key
    {
        bool isPress = false;
        xcb_keycode_t code = 0;
        /// Modifiers and group, as the event has them.
        std::uint16_t state = 0;
        xcb_window_t window = XCB_WINDOW_NONE;

        bool operator==(const Key&) const = default;
    };

    explicit XClient(const QString& display);
    ~XClient();
    XClient(const XClient&) = delete;
    XClient& operator=(const XClient&) = delete;

    static QByteArray windowClass(const QByteArray& instance, const QByteArray& name);

    /// Shows a window of 200 by 100 pixels.
    xcb_window_t show(const Look& look);
    void setWindowClass(xcb_window_t window, const QByteArray& value);
    void map(xcb_window_t window);
    void unmap(xcb_window_t window);
    void destroy(xcb_window_t window);
    void focus(xcb_window_t window);
    [[nodiscard]] xcb_window_t focused();

    /// The keys that this client's windows got so far.
    const std::vector<Key>& keys();
    void forgetKeys() { m_keys.clear(); }
    /// Which keys the server takes for held.
    [[nodiscard]] std::vector<xcb_keycode_t> heldKeys();
    struct KeyboardState
    {
        std::uint8_t mods = 0;
        std::uint8_t lockedMods = 0;
        std::uint8_t latchedMods = 0;
        std::uint8_t group = 0;
        std::uint8_t lockedGroup = 0;

        bool operator==(const KeyboardState&) const = default;
    };
    [[nodiscard]] KeyboardState keyboardState();
    void lock(std::uint8_t mods, std::uint8_t group);
    void latch(std::uint8_t mods);

    /// Where a window is on the screen.
    [[nodiscard]] QRect geometryOf(xcb_window_t window);

    /// The innermost window that a click at a place on the screen goes to; none if to the root.
    [[nodiscard]] xcb_window_t windowAt(QPoint place);

    /// The window that owns a selection.
    [[nodiscard]] xcb_window_t ownerOf(const std::string& selection);
    /// Makes a window the owner of a selection; the root window if none is named. Serves nobody.
    void own(const std::string& selection, xcb_window_t window = XCB_WINDOW_NONE);

    /// What the server's clock says, in milliseconds.
    [[nodiscard]] xcb_timestamp_t time();

    /// A key of the keyboard that the user types on, which is not the one of XTEST.
    void pressOnKeyboard(xcb_keycode_t key);
    void releaseOnKeyboard(xcb_keycode_t key);

    /// A hot key without modifiers.
    void grabKey(xcb_keycode_t key);
    /// A hot key with just these modifiers; false if another client has it.
    [[nodiscard]] bool grabKey(xcb_keycode_t key, std::uint16_t modifiers);
    void ungrabKey(xcb_keycode_t key, std::uint16_t modifiers);
    void grabKeyboard();
    void ungrabKeyboard();
    void grabPointer();
    void grabServer();
    void ungrabServer();

    /// Shows itself as a manager that tells the active window, and names it (none: nothing).
    void manage();
    void nameActive(xcb_window_t window);
    void stopManaging();

    /// Waits until the server has done all that was asked.
    void sync();

private:
    void fakeOnKeyboard(int event, xcb_keycode_t key);
    [[nodiscard]] xcb_atom_t atom(const std::string& name);
    void setProperty(
        xcb_window_t window, const char* name, xcb_atom_t type,
        const std::vector<std::uint32_t>& values);
    void drain();

    xcb_connection_t* m_connection = nullptr;
    const xcb_screen_t* m_screen = nullptr;
    xcb_window_t m_managerWindow = XCB_WINDOW_NONE;
    std::vector<Key> m_keys;
    xcb_timestamp_t m_time = 0;
};

} // namespace tessly::test
