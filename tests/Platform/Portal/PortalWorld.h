#pragma once

#include "DesktopPortal.h"
#include "MockPortal.h"
#include "TestBus.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <gtest/gtest.h>

#include <memory>

namespace tessly::test {

/// A bus, the portal on it, and the program's view of that. Time stands still.
class PortalWorld : public testing::Test
{
protected:
    using State = DesktopPortal::State;
    using Outcome = DesktopPortal::Outcome;
    using User = MockPortal::User;

    void startMock() { m_mock = std::make_unique<MockPortal>(m_bus); }

    DesktopPortal& openPortal()
    {
        m_portal = std::make_unique<DesktopPortal>(
            [address = m_bus.address()] { return TestBus::connect(address); }, m_clock);
        return *m_portal;
    }

    [[nodiscard]] bool becomes(State state)
    {
        return waitUntil([&] { return m_portal->state() == state; });
    }

    /// Until the program, the bus and the portal have dealt with what was on its way.
    void settle()
    {
        for (int turn = 0; turn < 3; ++turn) {
            QCoreApplication::processEvents();
            static_cast<void>(await(m_portal->version(QStringLiteral("of nothing"))));
        }
        QCoreApplication::processEvents();
    }

    MockPortal& mock() { return *m_mock; }

    TestBus m_bus;
    VirtualClock m_clock;
    std::unique_ptr<MockPortal> m_mock;
    std::unique_ptr<DesktopPortal> m_portal;
};

} // namespace tessly::test
