#pragma once

#include <QByteArray>

#include <map>
#include <string>
#include <vector>

struct wl_client;
struct wl_display;
struct wl_resource;

namespace tessly::test {

/// Windows for a TestCompositor to tell of, by zwlr_foreign_toplevel_manager_v1. On its thread.
class TestToplevels
{
public:
    using WindowID = int;

    explicit TestToplevels(wl_display* display);

    /// A window that has not said what it is, if the id is null.
    WindowID open(const QByteArray& appID, bool isActivated = false);
    void setAppID(WindowID window, const QByteArray& appID);
    /// Tells it also if it is no news.
    void setActivated(WindowID window, bool isActivated);
    void close(WindowID window);
    /// Ends the connection of every program that is told of windows.
    void disconnect();
    /// Tells every program that it will hear of no further windows.
    void finish();

    /// The windows that were to be activated.
    [[nodiscard]] const std::vector<WindowID>& activations() const { return m_activations; }

private:
    struct Window
    {
        QByteArray appID;
        bool isActivated = false;
        std::vector<wl_resource*> handles = {};
    };
    struct Handle
    {
        TestToplevels* toplevels;
        WindowID window;
    };
    struct Requests;
    friend struct Requests;

    void announce(wl_resource* manager, WindowID id);
    static void sendAppID(const Window& window, wl_resource* handle);
    static void sendState(const Window& window, wl_resource* handle);

    std::vector<wl_resource*> m_managers;
    std::map<WindowID, Window> m_windows;
    WindowID m_next = 1;
    std::vector<WindowID> m_activations;
};

} // namespace tessly::test
