#pragma once

#include "KeySender.h"
#include "WaylandKeyboard.h"

namespace tessly {

class WaylandDesktop;

/// Presses keys by a protocol of the compositor, which either has it for this program or not: the
/// user is not asked.
class WaylandKeySender : public KeySender
{
public:
    [[nodiscard]] bool isAllowed() const final;
    [[nodiscard]] bool requestAccess() final;
    [[nodiscard]] QCoro::Task<Sending>
    send(PasteChord chord, std::shared_ptr<const PasteTarget> target, IsThere isThere) final;

protected:
    /// `desktop` must outlive this.
    WaylandKeySender(WaylandDesktop& desktop, WaylandKeyboard::Way way);

    [[nodiscard]] WaylandDesktop& desktop() { return m_desktop; }

private:
    WaylandDesktop& m_desktop;
    WaylandKeyboard::Way m_way;
};

/// By zwp_virtual_keyboard_manager_v1. What the user holds down has no part in it.
class VirtualKeyboardSender final : public WaylandKeySender
{
public:
    explicit VirtualKeyboardSender(WaylandDesktop& desktop)
        : WaylandKeySender(desktop, WaylandKeyboard::Way::virtualKeyboard)
    {
    }
};

/// By org_kde_kwin_fake_input. Modifiers that the user holds down are waited for where the
/// compositor tells of them, since it does not let go of them then; elsewhere they are lifted, and
/// stay so.
class FakeInputSender final : public WaylandKeySender
{
public:
    explicit FakeInputSender(WaylandDesktop& desktop)
        : WaylandKeySender(desktop, WaylandKeyboard::Way::fakeInput)
    {
    }
    [[nodiscard]] QCoro::Task<bool> ready() override;
};

} // namespace tessly
