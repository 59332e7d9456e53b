#pragma once

#include "ClipboardMonitor.h"

#include "FakeImageConverter.h"
#include "FakePasteboard.h"
#include "FakeUserDefaults.h"
#include "FakeWorkspace.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tessly::test {

inline constexpr qint64 megabyte = 1'048'576;

inline ClipPayload text(const QByteArray& plainText)
{
    return ClipPayload({.plainText = plainText});
}

struct Capture
{
    ClipPayload payload;
    std::optional<QString> name;
    std::optional<QString> bundleID;

    bool operator==(const Capture&) const = default;
};

enum class Desktop { notifies, isPolled };

class MonitorTest : public testing::Test
{
protected:
    explicit MonitorTest(Desktop desktop)
    {
        if (desktop == Desktop::isPolled) {
            m_pasteboard.stopNotifying();
        }
        makeMonitor();
    }

    void makeMonitor()
    {
        m_monitor = std::make_unique<ClipboardMonitor>(
            ClipboardMonitor::Dependencies{
                m_pasteboard, m_settings, m_converter, m_workspace, m_clock},
            [this](
                ClipPayload payload, std::optional<QString> name, std::optional<QString> bundleID) {
                m_captures.push_back({std::move(payload), std::move(name), std::move(bundleID)});
            },
            [this](ClipboardMonitor::AccessIssue issue) { m_issues.push_back(issue); });
    }

    /// Begins to watch. What is asked about what is there already is forgotten.
    void start()
    {
        m_monitor->start();
        settle();
        m_pasteboard.forgetRequests();
    }

    /// Long enough for a change to be noticed and read on any desktop.
    void tick() { m_clock.advance(std::chrono::milliseconds(350)); }
    /// Lets what was released go on, without time passing.
    void settle() { m_clock.advance(std::chrono::milliseconds(0)); }

    [[nodiscard]] std::vector<QByteArray> texts() const
    {
        std::vector<QByteArray> texts;
        for (const Capture& capture : m_captures) {
            texts.push_back(capture.payload.plainText().value_or("(no text)"));
        }
        return texts;
    }

    /// Brings an application to the front; its name is made of its id.
    void setFront(const QString& bundleID)
    {
        m_workspace.setFrontmost(
            std::make_shared<FakeRunningApplication>(bundleID, QStringLiteral("The ") + bundleID));
    }

    /// Begins with an application in front that has been there for long.
    void SetUp() override
    {
        setFront(QStringLiteral("org.example.Editor"));
        m_clock.advance(std::chrono::hours(1));
    }

    VirtualClock m_clock;
    FakeUserDefaults m_defaults;
    AppSettings m_settings{m_defaults};
    FakePasteboard m_pasteboard;
    FakeImageConverter m_converter;
    FakeWorkspace m_workspace{&m_clock};
    std::vector<Capture> m_captures;
    std::vector<ClipboardMonitor::AccessIssue> m_issues;
    std::unique_ptr<ClipboardMonitor> m_monitor;
};

/// What holds on every desktop.
class ClipboardMonitorTest : public MonitorTest, public testing::WithParamInterface<Desktop>
{
protected:
    ClipboardMonitorTest()
        : MonitorTest(GetParam())
    {
    }
};

/// A desktop that tells when the clipboard changes.
class NotifiedMonitorTest : public MonitorTest
{
protected:
    NotifiedMonitorTest()
        : MonitorTest(Desktop::notifies)
    {
    }
};

} // namespace tessly::test
