#include "X11KeyEventPoster.h"

#include "X11Desktop.h"
#include "X11RunningApplication.h"

#include <QCoroFuture>
#include <QPromise>

#include <utility>

namespace tessly {

X11KeyEventPoster::X11KeyEventPoster(
    X11Desktop& desktop, OfferAsPrimary offerAsPrimary, Options options)
    : m_desktop(desktop)
    , m_offerAsPrimary(std::move(offerAsPrimary))
    , m_options(options)
{
}

X11KeyEventPoster::X11KeyEventPoster(X11Desktop& desktop, OfferAsPrimary offerAsPrimary)
    : X11KeyEventPoster(desktop, std::move(offerAsPrimary), Options())
{
}

QCoro::Task<PostResult> X11KeyEventPoster::postPaste(std::shared_ptr<RunningApplication> target)
{
    const auto application = std::dynamic_pointer_cast<X11RunningApplication>(target);
    if (!application || !application->isActive()) {
        co_return PostResult::targetNotInFront;
    }
    const auto chord = application->window()->owner().chord;
    if (chord == PasteChord::shiftInsert) {
        const std::weak_ptr<bool> alive = m_alive;
        const bool isOffered = m_offerAsPrimary && co_await m_offerAsPrimary();
        if (!isOffered || alive.expired()) {
            co_return PostResult::failed;
        }
    }
    const auto promise = std::make_shared<QPromise<PostResult>>();
    QFuture<PostResult> future = promise->future();
    promise->start();
    m_desktop.post(
        {.chord = chord,
         .target = application->window(),
         .completion = std::make_shared<X11Keyboard::Completion>([promise](PostResult result) {
             promise->addResult(result);
             promise->finish();
         }),
         .releaseWait = m_options.releaseWait});
    co_return co_await future;
}

} // namespace tessly
