#include "ClipboardOwner.h"
#include "PasteboardContract.h"
#include "X11Pasteboard.h"
#include "XSession.h"

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// The real thing, with real other programs: owner.py copies, xclip pastes.
class X11World final : public PasteboardWorld
{
public:
    [[nodiscard]] Pasteboard& pasteboard() override { return m_pasteboard; }

    void copy(const Content& content) override
    {
        QStringList arguments;
        const auto offer = [&arguments](const QString& name, const QByteArray& value) {
            arguments << u"--target"_s << name << u"hex:"_s + QString::fromLatin1(value.toHex());
        };
        if (content.plainText) {
            offer(u"UTF8_STRING"_s, *content.plainText);
        }
        if (content.html) {
            offer(u"text/html"_s, *content.html);
        }
        if (content.png) {
            offer(u"image/png"_s, *content.png);
        }
        if (!content.fileURLs.isEmpty()) {
            offer(u"text/uri-list"_s, content.fileURLs.join("\r\n"));
        }
        for (const QString& type : content.extraTypes) {
            offer(type, "1");
        }
        if (content.hangs) {
            arguments << u"--behave"_s << u"*"_s << u"silent"_s;
        }
        if (content.hangsAtHTML) {
            arguments << u"--behave"_s << u"text/html"_s << u"silent"_s;
        }
        if (content.refusesHTML) {
            arguments << u"--behave"_s << u"text/html"_s << u"refuse"_s;
        }
        if (content.leavesAfterOneRead) {
            arguments << u"--one-shot"_s;
        }
        auto next = std::make_unique<ClipboardOwner>(m_session, arguments);
        m_owner = std::move(next);
    }

    void ownerLeaves() override { m_owner->leave(); }

    [[nodiscard]] std::optional<QByteArray> otherProgramPastes() override
    {
        const auto process = m_session.program(
            u"xclip"_s, {u"-o"_s, u"-selection"_s, u"clipboard"_s, u"-t"_s, u"UTF8_STRING"_s});
        process->setProcessChannelMode(QProcess::SeparateChannels);
        process->start();
        if (!waitUntil([&] { return process->state() == QProcess::NotRunning; }) ||
            process->exitCode() != 0) {
            return std::nullopt;
        }
        return process->readAllStandardOutput();
    }

private:
    XSession m_session{XSession::WindowManager::none};
    X11Pasteboard m_pasteboard{
        {.display = m_session.display().toStdString(),
         .deadlines = {
             .stall = std::chrono::milliseconds(1500), .takeover = std::chrono::minutes(1)}}};
    std::unique_ptr<ClipboardOwner> m_owner;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    X11, PasteboardContract,
    testing::Values(PasteboardWorldFactory{"X11", [] { return std::make_unique<X11World>(); }}),
    testing::PrintToStringParamName());

} // namespace tessly::test
