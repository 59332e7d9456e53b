#pragma once

#include "PortalKeySender.h"

#include "FakePasteTarget.h"
#include "LogCapture.h"
#include "PortalWorld.h"
#include "ThreadExecutor.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <algorithm>
#include <ranges>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Key = MockPortal::Key;
using Sending = KeySender::Sending;

inline constexpr int control = 29;
inline constexpr int shift = 42;
inline constexpr int v = 47;
inline constexpr int insert = 110;

inline const QString logCategory = u"com.brackmoor.tessly.PortalKeySender"_s;

class PortalKeySenderTest : public PortalWorld
{
protected:
    PortalKeySenderTest() { startMock(); }
    ~PortalKeySenderTest() override { m_sender.reset(); }

    void saveToken(const QString& token)
    {
        QFile file(m_tokenPath);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(token.toUtf8());
    }
    /// Saves a token that the portal knows.
    void saveGoodToken()
    {
        mock().tokens << u"known"_s;
        saveToken(u"known"_s);
    }
    [[nodiscard]] QString savedToken() const
    {
        QFile file(m_tokenPath);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    /// A file that is missing is an empty token.
    [[nodiscard]] bool becomesSaved(const QString& token)
    {
        return waitUntil([&] { return savedToken() == token; });
    }

    PortalKeySender& sender() { return *m_sender; }
    void startSender()
    {
        openPortal();
        m_sender = std::make_unique<PortalKeySender>(
            *m_portal,
            std::make_unique<RestoreTokenFile>(
                m_tokenPath, std::make_unique<ThreadExecutor>("token")),
            [this](PasteChord chord) { return strokes(chord); });
    }
    /// Until the sender knows that it may ask.
    void startSenderAndWait()
    {
        startSender();
        ASSERT_TRUE(waitUntil([this] { return sender().isAvailable(); }));
    }
    void startAllowed()
    {
        startSenderAndWait();
        EXPECT_TRUE(sender().requestAccess());
        ASSERT_TRUE(becomesAllowed());
    }
    [[nodiscard]] bool becomesAllowed()
    {
        return waitUntil([this] { return sender().isAllowed(); });
    }
    [[nodiscard]] bool becomesForbidden()
    {
        return waitUntil([this] { return !sender().isAllowed(); });
    }
    [[nodiscard]] bool isAsked(int times)
    {
        return waitUntil([&] { return mock().questions() == times; });
    }

    QTemporaryDir m_folder;
    QString m_tokenPath = m_folder.filePath(u"remote-desktop-token"_s);
    /// As on an American keyboard.
    [[nodiscard]] std::optional<KeyStrokes> strokes(PasteChord chord) const
    {
        std::vector<int> keys;
        if (chord == PasteChord::shiftInsert) {
            keys = {shift, insert};
        } else if (!m_keyOfV) {
            return std::nullopt;
        } else if (chord == PasteChord::controlShiftV) {
            keys = {control, shift, *m_keyOfV};
        } else {
            keys = {control, *m_keyOfV};
        }
        KeyStrokes strokes;
        for (const int key : keys) {
            strokes.push_back({.key = static_cast<quint32>(key), .isPress = true});
        }
        for (const int key : keys | std::views::reverse) {
            strokes.push_back({.key = static_cast<quint32>(key), .isPress = false});
        }
        return strokes;
    }

    /// None where no layout has the letter.
    std::optional<int> m_keyOfV = v;
    std::unique_ptr<PortalKeySender> m_sender;
};

/// What comes before each chord.
inline std::vector<Key> releases()
{
    std::vector<Key> keys;
    for (const int modifier : {shift, 54, 56, 100, 125, 126, control, 97}) {
        keys.emplace_back(modifier, false);
    }
    return keys;
}

/// Whether these are chords, each after the releases of what may be held, in any order.
testing::AssertionResult inline areChords(
    std::vector<Key> keys, std::initializer_list<std::vector<Key>> chords)
{
    std::vector<Key> expected;
    for (const auto& chord : chords) {
        auto lifted = releases();
        if (keys.size() >= expected.size() + lifted.size()) {
            const auto begin = keys.begin() + std::ssize(expected);
            std::sort(begin, begin + std::ssize(lifted));
        }
        std::ranges::sort(lifted);
        expected.insert(expected.end(), lifted.begin(), lifted.end());
        expected.insert(expected.end(), chord.begin(), chord.end());
    }
    if (keys == expected) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << testing::PrintToString(keys);
}

} // namespace tessly::test
