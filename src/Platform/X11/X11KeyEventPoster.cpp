#include "X11KeyEventPoster.h"

#include "X11Desktop.h"
#include "X11RunningApplication.h"

#include <QCoroFuture>
#include <QPromise>

#include <utility>

namespace tessly {

namespace {

PostResult postResult(X11Keyboard::Result result)
{
    switch (result) {
    case X11Keyboard::Result::posted:
        return PostResult::posted;
    case X11Keyboard::Result::targetNotInFront:
        return PostResult::targetNotInFront;
    case X11Keyboard::Result::contentReplaced:
        return PostResult::contentReplaced;
    case X11Keyboard::Result::noLetter:
    case X11Keyboard::Result::failed:
        return PostResult::failed;
    }
    Q_UNREACHABLE();
}

} // namespace

X11KeyEventPoster::X11KeyEventPoster(
    X11Desktop& desktop, Clipboard clipboard, xcb_window_t owner, Options options)
    : m_desktop(desktop)
    , m_clipboard(std::move(clipboard))
    , m_owner(owner)
    , m_options(options)
{
}

X11KeyEventPoster::X11KeyEventPoster(X11Desktop& desktop, Clipboard clipboard, xcb_window_t owner)
    : X11KeyEventPoster(desktop, std::move(clipboard), owner, Options())
{
}

QCoro::Task<PostResult>
X11KeyEventPoster::postPaste(std::shared_ptr<RunningApplication> target, WriteTicket content)
{
    const auto application = std::dynamic_pointer_cast<X11RunningApplication>(target);
    if (!application || !application->isActive()) {
        co_return PostResult::targetNotInFront;
    }
    const std::weak_ptr<bool> alive = m_alive;
    // Keys that came first would paste what was on the clipboard before.
    const bool isHeld = m_clipboard.holds && co_await m_clipboard.holds(content);
    if (alive.expired()) {
        co_return PostResult::failed;
    }
    if (!isHeld) {
        co_return PostResult::contentReplaced;
    }
    const auto window = application->window();
    const auto chord = application->pasteChord();
    if (chord != PasteChord::shiftInsert) {
        const auto result = co_await press(chord, window, content);
        // Where no layout has the letter, toolkits know no Ctrl+V, whoever presses it. The other
        // chord needs none; terminals paste PRIMARY by it.
        if (result != X11Keyboard::Result::noLetter || alive.expired()) {
            co_return postResult(result);
        }
    }
    const bool isOffered =
        m_clipboard.offerAsPrimary && co_await m_clipboard.offerAsPrimary(content);
    if (!isOffered && !alive.expired()) {
        const bool isStillHeld = co_await m_clipboard.holds(content);
        co_return isStillHeld ? PostResult::failed : PostResult::contentReplaced;
    }
    if (alive.expired()) {
        co_return PostResult::failed;
    }
    co_return postResult(co_await press(PasteChord::shiftInsert, window, content));
}

QCoro::Task<X11Keyboard::Result> X11KeyEventPoster::press(
    PasteChord chord, std::shared_ptr<const X11Window> target, WriteTicket content)
{
    const auto promise = std::make_shared<QPromise<X11Keyboard::Result>>();
    QFuture<X11Keyboard::Result> future = promise->future();
    promise->start();
    m_desktop.post(
        {.chord = chord,
         .target = std::move(target),
         .completion =
             std::make_shared<X11Keyboard::Completion>([promise](X11Keyboard::Result result) {
                 promise->addResult(result);
                 promise->finish();
             }),
         .owner = m_owner,
         .isThere = [begin = m_clipboard.begin, content,
                     chord] { return begin && begin(content, chord == PasteChord::shiftInsert); },
         .releaseWait = m_options.releaseWait});
    co_return co_await future;
}

} // namespace tessly
