#include "FocusedKeyEventPoster.h"

#include "PasteTarget.h"

#include <utility>

namespace tessly {

namespace {

PostResult postResult(KeySender::Sending sending)
{
    switch (sending) {
    case KeySender::Sending::sent:
        return PostResult::posted;
    case KeySender::Sending::notInFront:
        return PostResult::targetNotInFront;
    case KeySender::Sending::contentReplaced:
        return PostResult::contentReplaced;
    case KeySender::Sending::noKeys:
    case KeySender::Sending::failed:
        return PostResult::failed;
    }
    Q_UNREACHABLE();
}

} // namespace

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

QCoro::Task<PostResult>
FocusedKeyEventPoster::postPaste(std::shared_ptr<RunningApplication> target, WriteTicket content)
{
    const auto application = std::dynamic_pointer_cast<PasteTarget>(target);
    if (!application || !application->isActive()) {
        co_return PostResult::targetNotInFront;
    }
    const std::weak_ptr<bool> alive = m_alive;
    // First, since it may take a while in which other programs copy.
    const bool isReady = co_await m_sender.ready();
    if (alive.expired()) {
        co_return PostResult::failed;
    }
    if (!isReady) {
        co_return PostResult::targetNotInFront;
    }
    const bool isText = m_clipboard.isText && m_clipboard.isText(content);
    const PasteChord chord = isText ? application->textPasteChord() : application->pasteChord();
    const auto sending = co_await send(chord, application, content);
    if (sending != KeySender::Sending::noKeys || chord == PasteChord::shiftInsert ||
        alive.expired()) {
        co_return postResult(sending);
    }
    // Where no layout has the letter, toolkits know no Ctrl+V, whoever presses it; where layouts
    // have it on different keys, one of them makes another command of it. The other chord needs no
    // letter; terminals paste PRIMARY by it.
    co_return postResult(co_await send(PasteChord::shiftInsert, application, content));
}

QCoro::Task<KeySender::Sending> FocusedKeyEventPoster::send(
    PasteChord chord, std::shared_ptr<const PasteTarget> target, WriteTicket content)
{
    const std::weak_ptr<bool> alive = m_alive;
    // Keys that came before the content would paste what was on the clipboard before, and keys that
    // come late what another program has copied since.
    const bool isHeld = m_clipboard.holds && co_await m_clipboard.holds(content);
    if (alive.expired()) {
        co_return KeySender::Sending::failed;
    }
    if (!isHeld) {
        co_return KeySender::Sending::contentReplaced;
    }
    if (chord == PasteChord::shiftInsert) {
        const bool isOffered =
            m_clipboard.offerAsPrimary && co_await m_clipboard.offerAsPrimary(content);
        if (!isOffered && !alive.expired()) {
            const bool isStillHeld = co_await m_clipboard.holds(content);
            co_return isStillHeld ? KeySender::Sending::failed
                                  : KeySender::Sending::contentReplaced;
        }
        if (alive.expired()) {
            co_return KeySender::Sending::failed;
        }
    }
    if (!target->isActive()) {
        co_return KeySender::Sending::notInFront;
    }
    co_return co_await m_sender.send(chord, target, [begin = m_clipboard.begin, content, chord] {
        return begin && begin(content, chord == PasteChord::shiftInsert);
    });
}

} // namespace tessly
