#pragma once

#include "KeyEventPoster.h"
#include "KeySender.h"
#include "PasteClipboard.h"

#include <memory>

namespace tessly {

/// Pastes where keys go to whatever has the keyboard: they are sent only while the target has it,
/// which is looked at last thing before.
class FocusedKeyEventPoster final : public KeyEventPoster
{
public:
    /// `sender` must outlive this.
    FocusedKeyEventPoster(KeySender& sender, PasteClipboard clipboard);
    ~FocusedKeyEventPoster() override;

    [[nodiscard]] bool isAllowed() const override;
    [[nodiscard]] bool requestAccess() override;
    /// A target that is no PasteTarget is never in front.
    [[nodiscard]] QCoro::Task<PostResult>
    postPaste(std::shared_ptr<RunningApplication> target, WriteTicket content) override;

private:
    [[nodiscard]] QCoro::Task<KeySender::Sending>
    send(PasteChord chord, std::shared_ptr<const PasteTarget> target, WriteTicket content);

    KeySender& m_sender;
    PasteClipboard m_clipboard;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace tessly
