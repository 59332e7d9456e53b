#pragma once

#include "PasteboardContract.h"
#include "WaylandPasteboard.h"
#include "WaylandProgram.h"

#include <memory>
#include <string>
#include <vector>

namespace tessly::test {

/// A compositor, the pasteboard on it, and another program that copies, and can misbehave.
class WaylandWorld : public PasteboardWorld
{
public:
    explicit WaylandWorld(const std::string& display)
        : m_display(display)
        , m_pasteboard(
              {.display = display,
               .deadlines = {
                   .stall = std::chrono::milliseconds(1500), .takeover = std::chrono::minutes(1)}})
    {
    }

    [[nodiscard]] Pasteboard& pasteboard() override { return m_pasteboard; }

    void copy(const Content& content) override
    {
        auto next = std::make_unique<WaylandProgram>(m_display);
        next->copy(
            offeredOf(content), content.leavesAfterOneRead
                                    ? WaylandProgram::Life::leavesAfterOneRead
                                    : WaylandProgram::Life::stays);
        m_owner = std::move(next);
    }

    void ownerLeaves() override { m_owner->leave(); }

private:
    /// What a content is, as a program offers it.
    static std::vector<WaylandProgram::Offered> offeredOf(const Content& content)
    {
        using Manner = WaylandProgram::Manner;
        const auto usual = content.hangs ? Manner::hangs : Manner::serves;
        std::vector<WaylandProgram::Offered> offered;
        if (content.plainText) {
            offered.push_back({"UTF8_STRING", *content.plainText, usual});
        }
        if (content.html) {
            offered.push_back(
                {"text/html", *content.html,
                 content.refusesHTML   ? Manner::refuses
                 : content.hangsAtHTML ? Manner::hangs
                                       : usual});
        }
        if (content.png) {
            offered.push_back({"image/png", *content.png, usual});
        }
        if (!content.fileURLs.isEmpty()) {
            offered.push_back({"text/uri-list", content.fileURLs.join("\r\n"), usual});
        }
        for (const QString& type : content.extraTypes) {
            offered.push_back({type.toUtf8(), "1", usual});
        }
        return offered;
    }

    std::string m_display;
    WaylandPasteboard m_pasteboard;
    std::unique_ptr<WaylandProgram> m_owner;
};

} // namespace tessly::test
