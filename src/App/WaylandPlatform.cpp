#include "WaylandPlatform.h"

#include "NoPasteboard.h"
#include "StatusItems.h"
#include "UnnamedWorkspace.h"
#include "WaylandKeySender.h"
#include "WaylandPasteboard.h"
#include "WaylandWorkspace.h"

namespace tessly {

namespace {

class NoHotKeyCenter final : public HotKeyCenter
{
public:
    [[nodiscard]] bool isAvailable() const override { return false; }
    [[nodiscard]] Installation installHandler(Handler) override { return {}; }
    Status removeHandler(Reference) override { return done; }
    [[nodiscard]] Registration registerKey(quint32, quint32, KeyID) override
    {
        return {.status = answer()};
    }
    Status unregisterKey(Reference) override { return done; }

private:
    static QCoro::Task<Status> answer() { co_return unavailable; }
};

} // namespace

WaylandPlatform::WaylandPlatform(
    const DesktopChoice& choice, const std::function<void()>& connectionLost)
    : FreedesktopPlatform(choice)
    , m_statusItem(makeBusStatusItem())
{
    PasteClipboard clipboard;
    if (choice.hasClipboard) {
        auto pasteboard = std::make_unique<WaylandPasteboard>();
        pasteboard->setConnectionLost(connectionLost);
        clipboard.hasWritten = [pasteboard = pasteboard.get()] { return pasteboard->hasWritten(); };
        m_pasteboard = std::move(pasteboard);
    } else {
        m_pasteboard = std::make_unique<NoPasteboard>();
    }
    if (m_desktop.hasToplevels()) {
        m_workspace = std::make_unique<WaylandWorkspace>(m_desktop);
    } else {
        m_workspace = std::make_unique<UnnamedWorkspace>(nullptr);
    }
    if (m_desktop.hasVirtualKeyboard()) {
        m_sender = std::make_unique<VirtualKeyboardSender>(m_desktop);
    } else {
        m_sender = std::make_unique<FakeInputSender>(m_desktop);
    }
    m_keys = std::make_unique<FocusedKeyEventPoster>(*m_sender, clipboard);
    m_hotKeys = std::make_unique<NoHotKeyCenter>();
}

WaylandPlatform::~WaylandPlatform() = default;

} // namespace tessly
