#pragma once

#include "PasteTarget.h"
#include "WaylandKeyApplications.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <linux/input-event-codes.h>
#include <memory>
#include <optional>
#include <vector>

namespace tessly::test {

/// A window "Editor" that is in front and has the keyboard, and what presses keys.
template <typename Applications>
class WaylandKeysTest : public testing::Test
{
protected:
    using Key = WaylandWindows::Key;
    using Keys = std::vector<Key>;

    static constexpr std::uint32_t shift = 1;
    static constexpr std::uint32_t control = 4;
    static constexpr std::uint32_t alt = 8;

    WaylandKeysTest()
    {
        windows().show("Editor");
        inFront(QStringLiteral("Editor"));
        EXPECT_TRUE(waitUntil([this] { return windows().focus() == "Editor"; }));
        windows().forgetKeys();
    }

    Applications& applications() { return m_applications; }
    WaylandWindows& windows() { return m_applications.windows(); }
    [[nodiscard]] bool send(PasteChord chord)
    {
        return await(m_applications.sender().send(chord, front(), [] { return true; })) ==
               KeySender::Sending::sent;
    }
    [[nodiscard]] PostResult paste(const std::shared_ptr<PasteTarget>& target)
    {
        return await(m_applications.poster().postPaste(target, WriteTicket(1)));
    }

    std::shared_ptr<PasteTarget> front()
    {
        return std::dynamic_pointer_cast<PasteTarget>(
            m_applications.workspace().frontmostApplication());
    }
    /// The application with this id, once it is in front.
    std::shared_ptr<PasteTarget> inFront(const QString& id)
    {
        std::shared_ptr<PasteTarget> application;
        EXPECT_TRUE(waitUntil([&] {
            application = front();
            return application && application->bundleIdentifier() == id;
        })) << id.toStdString();
        return application;
    }

    /// The key of Ctrl+V where only keys can be moved.
    std::optional<std::uint32_t> letter()
    {
        const auto strokes = m_applications.desktop().strokes(PasteChord::controlV);
        return strokes ? std::optional(strokes->at(1).key) : std::nullopt;
    }

    /// What keys came since the last time, or the start.
    Keys keys()
    {
        auto seen = windows().keys();
        windows().forgetKeys();
        return seen;
    }
    static Key pressed(std::uint32_t code, std::uint32_t modifiers, std::uint32_t group = 0)
    {
        return {"Editor", code, true, modifiers, group};
    }
    static Key released(std::uint32_t code, std::uint32_t modifiers, std::uint32_t group = 0)
    {
        return {"Editor", code, false, modifiers, group};
    }
    static Keys controlV(std::uint32_t code = KEY_V, std::uint32_t group = 0)
    {
        return {
            pressed(KEY_LEFTCTRL, 0, group), pressed(code, control, group),
            released(code, control, group), released(KEY_LEFTCTRL, control, group)};
    }

    void expectAllChords()
    {
        EXPECT_TRUE(send(PasteChord::controlV));
        EXPECT_EQ(keys(), controlV());
        EXPECT_TRUE(send(PasteChord::controlShiftV));
        EXPECT_THAT(
            keys(), testing::ElementsAre(
                        pressed(KEY_LEFTCTRL, 0), pressed(KEY_LEFTSHIFT, control),
                        pressed(KEY_V, control | shift), released(KEY_V, control | shift),
                        released(KEY_LEFTSHIFT, control | shift), released(KEY_LEFTCTRL, control)));
        EXPECT_TRUE(send(PasteChord::shiftInsert));
        EXPECT_THAT(
            keys(), testing::ElementsAre(
                        pressed(KEY_LEFTSHIFT, 0), pressed(KEY_INSERT, shift),
                        released(KEY_INSERT, shift), released(KEY_LEFTSHIFT, shift)));
        EXPECT_TRUE(send(PasteChord::controlV));
        EXPECT_EQ(keys(), controlV()) << "as the first time";
    }

    /// Time and again, a window that was in front closes right before a paste into it.
    void expectThatWhatIsBehindGetsNoKeys()
    {
        for (int count = 0; count < 20; ++count) {
            windows().show("Sketcher");
            const auto sketcher = inFront(QStringLiteral("Sketcher"));
            windows().close("Sketcher");
            // The news of that may not have come yet.
            EXPECT_EQ(paste(sketcher), PostResult::targetNotInFront);
            EXPECT_THAT(keys(), testing::IsEmpty());
            inFront(QStringLiteral("Editor"));
        }
    }

private:
    Applications m_applications;
};

} // namespace tessly::test
