#include "FocusedKeyEventPoster.h"

#include "KeySender.h"
#include "PasteTarget.h"

#include <utility>

namespace tessly {

FocusedKeyEventPoster::FocusedKeyEventPoster(KeySender& sender, PasteClipboard clipboard)
    : m_sender(sender)
    , m_clipboard(std::move(clipboard))
{
}

FocusedKeyEventPoster::~FocusedKeyEventPoster() = default;

bool FocusedKeyEventPoster::isAllowed() const
{
    return m_sender.isAllowed();
}

bool FocusedKeyEventPoster::requestAccess()
{
    return m_sender.requestAccess();
}

QCoro::Task<PostResult> FocusedKeyEventPoster::postPaste(std::shared_ptr<RunningApplication> target)
{
    const auto application = std::dynamic_pointer_cast<PasteTarget>(target);
    if (!application || !application->isActive()) {
        co_return PostResult::targetNotInFront;
    }
    const std::weak_ptr<bool> alive = m_alive;
    // Keys that came first would paste what was on the clipboard before.
    const bool hasWritten = m_clipboard.hasWritten && co_await m_clipboard.hasWritten();
    if (!hasWritten || alive.expired()) {
        co_return PostResult::failed;
    }
    const PasteChord chord = application->pasteChord();
    if (chord == PasteChord::shiftInsert) {
        const bool isOffered = m_clipboard.offerAsPrimary && co_await m_clipboard.offerAsPrimary();
        if (!isOffered || alive.expired()) {
            co_return PostResult::failed;
        }
    }
    co_await m_sender.keysUp();
    if (alive.expired()) {
        co_return PostResult::failed;
    }
    if (!application->isActive()) {
        co_return PostResult::targetNotInFront;
    }
    if (co_await m_sender.send(chord)) {
        co_return PostResult::posted;
    }
    // A sender that can tell sends none when the keyboard has gone elsewhere meanwhile.
    const bool hasLeft = !alive.expired() && m_sender.isAllowed() && !application->isActive();
    co_return hasLeft ? PostResult::targetNotInFront : PostResult::failed;
}

} // namespace tessly
