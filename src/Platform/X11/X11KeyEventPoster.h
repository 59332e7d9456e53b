#pragma once

#include "KeyEventPoster.h"

#include <chrono>
#include <functional>
#include <memory>

namespace tessly {

class X11Desktop;

/// Presses keys by the X server's XTEST extension, which asks for no permission.
class X11KeyEventPoster final : public KeyEventPoster
{
public:
    /// Offers what is on the clipboard as PRIMARY too, for terminals that paste only that; false if
    /// it cannot be done.
    using OfferAsPrimary = std::function<QCoro::Task<bool>()>;

    struct Options
    {
        /// How long to wait for the user to let go of held keys before they are released for them.
        std::chrono::milliseconds releaseWait{1000};
    };

    X11KeyEventPoster(X11Desktop& desktop, OfferAsPrimary offerAsPrimary, Options options);
    X11KeyEventPoster(X11Desktop& desktop, OfferAsPrimary offerAsPrimary);

    [[nodiscard]] bool isAllowed() const override { return true; }
    [[nodiscard]] bool requestAccess() override { return true; }
    [[nodiscard]] QCoro::Task<PostResult>
    postPaste(std::shared_ptr<RunningApplication> target) override;

private:
    X11Desktop& m_desktop;
    OfferAsPrimary m_offerAsPrimary;
    Options m_options;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace tessly
