#pragma once

#include "HotKeyCenter.h"
#include "TestSupport.h"
#include "X11Desktop.h"
#include "X11HotKeyCenter.h"
#include "XClient.h"
#include "XSession.h"

#include <QDir>

#include <bit>
#include <map>
#include <memory>
#include <ranges>
#include <vector>

namespace tessly::test {

/// An X server with its window manager, the keyboard that the user types on, another client, and
/// the hot keys.
class HotKeyDesktop
{
public:
    static constexpr xcb_keycode_t leftControl = 37;
    static constexpr xcb_keycode_t leftShift = 50;
    static constexpr xcb_keycode_t leftAlt = 64;
    static constexpr xcb_keycode_t leftSuper = 133;

    HotKeyDesktop()
        : m_client(m_session.display())
        , m_desktop(std::make_unique<X11Desktop>(
              m_session.display().toStdString(), DesktopEntries(QStringList())))
        , m_center(std::make_unique<X11HotKeyCenter>(*m_desktop))
    {
    }

    XSession& session() { return m_session; }
    XClient& client() { return m_client; }
    HotKeyCenter& center() { return *m_center; }
    void endCenter() { m_center.reset(); }
    void endDesktop()
    {
        m_center.reset();
        m_desktop.reset();
    }

    /// The place of a key on the keyboard.
    static xcb_keycode_t place(quint32 keyCode)
    {
        static const std::map<quint32, xcb_keycode_t> places = {
            {18, 10}, {19, 11}, {20, 12}, {21, 13}, {23, 14},
            {22, 15}, {26, 16}, {28, 17}, {25, 18}, {29, 19},
        };
        return places.at(keyCode);
    }

    void press(quint32 keyCode, quint32 modifiers)
    {
        const auto held = modifierKeys(modifiers);
        for (const auto key : held) {
            m_client.pressOnKeyboard(key);
        }
        tap(place(keyCode));
        for (const auto key : held | std::views::reverse) {
            m_client.releaseOnKeyboard(key);
        }
    }

    void tap(xcb_keycode_t key)
    {
        m_client.pressOnKeyboard(key);
        m_client.releaseOnKeyboard(key);
    }

    bool takeElsewhere(quint32 keyCode, quint32 modifiers)
    {
        return m_client.grabKey(place(keyCode), serverModifiers(modifiers));
    }
    void releaseElsewhere(quint32 keyCode, quint32 modifiers)
    {
        m_client.ungrabKey(place(keyCode), serverModifiers(modifiers));
    }

    void settle()
    {
        // The server first. Then answers of the loop: it takes events up after each, and the second
        // comes when those of the first have been passed on.
        m_client.sync();
        constexpr quint32 unusual = HotKeyCenter::commandKey | HotKeyCenter::shiftKey |
                                    HotKeyCenter::optionKey | HotKeyCenter::controlKey;
        for (int turn = 0; turn < 2; ++turn) {
            auto question = m_center->registerKey(29, unusual, {});
            static_cast<void>(await(std::move(question.status)));
            m_center->unregisterKey(question.key);
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1000);
    }

    /// As on an ordinary keyboard.
    static std::uint16_t serverModifiers(quint32 modifiers)
    {
        std::uint16_t mask = 0;
        const auto add = [&](quint32 modifier, int serverModifier) {
            if ((modifiers & modifier) != 0) {
                mask = static_cast<std::uint16_t>(mask | serverModifier);
            }
        };
        add(HotKeyCenter::commandKey, XCB_MOD_MASK_CONTROL);
        add(HotKeyCenter::shiftKey, XCB_MOD_MASK_SHIFT);
        add(HotKeyCenter::optionKey, XCB_MOD_MASK_1);
        add(HotKeyCenter::controlKey, XCB_MOD_MASK_4);
        return mask;
    }

private:
    static std::vector<xcb_keycode_t> modifierKeys(quint32 modifiers)
    {
        std::vector<xcb_keycode_t> keys;
        const auto add = [&](quint32 modifier, xcb_keycode_t key) {
            if ((modifiers & modifier) != 0) {
                keys.push_back(key);
            }
        };
        add(HotKeyCenter::commandKey, leftControl);
        add(HotKeyCenter::optionKey, leftAlt);
        add(HotKeyCenter::shiftKey, leftShift);
        add(HotKeyCenter::controlKey, leftSuper);
        return keys;
    }

    XSession m_session;
    XClient m_client;
    std::unique_ptr<X11Desktop> m_desktop;
    std::unique_ptr<X11HotKeyCenter> m_center;
};

} // namespace tessly::test
