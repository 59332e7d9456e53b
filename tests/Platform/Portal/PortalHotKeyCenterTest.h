#pragma once

#include "PortalHotKeyCenter.h"

#include "LogCapture.h"
#include "PortalWorld.h"
#include "ThreadExecutor.h"
#include "contract/HotKeyCenterContract.h"

#include <gmock/gmock.h>

#include <QTemporaryDir>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Status = HotKeyCenter::Status;

/// A portal as the contract of hot keys asks for it.
class PortalHotKeys
{
public:
    PortalHotKeyCenter& center() { return *m_center; }
    void endCenter() { m_center.reset(); }
    void press(quint32 keyCode, quint32 modifiers)
    {
        m_mock.press(*portalTrigger(keyCode, modifiers));
    }
    bool takeElsewhere(quint32 keyCode, quint32 modifiers)
    {
        const QString trigger = *portalTrigger(keyCode, modifiers);
        if (m_mock.held().contains(trigger)) {
            return false;
        }
        m_mock.takenTriggers << trigger;
        return true;
    }
    void releaseElsewhere(quint32 keyCode, quint32 modifiers)
    {
        m_mock.takenTriggers.remove(*portalTrigger(keyCode, modifiers));
    }
    void settle()
    {
        // First what waits for the next turn; then a question, which is answered after all that has
        // been sent so far.
        for (int turn = 0; turn < 3; ++turn) {
            QCoreApplication::processEvents();
            static_cast<void>(await(m_portal.version(u"of nothing"_s)));
        }
        QCoreApplication::processEvents();
    }

private:
    TestBus m_bus;
    VirtualClock m_clock;
    MockPortal m_mock{m_bus};
    DesktopPortal m_portal{
        [address = m_bus.address()] { return TestBus::connect(address); }, m_clock};
    std::unique_ptr<PortalHotKeyCenter> m_center =
        std::make_unique<PortalHotKeyCenter>(m_portal, m_clock, directPasteShortcut);
};

INSTANTIATE_TYPED_TEST_SUITE_P(Portal, HotKeyCenterContract, PortalHotKeys);

class PortalHotKeyCenterTest : public PortalWorld
{
protected:
    static constexpr quint32 optionShift = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;
    static constexpr std::array<quint32, 3> keyCodes = {18, 19, 20};
    const QString category = u"com.brackmoor.tessly.PortalHotKeyCenter"_s;
    const QString bindShortcuts = u"GlobalShortcuts.BindShortcuts"_s;

    PortalHotKeyCenterTest() { startMock(); }
    ~PortalHotKeyCenterTest() override { m_center.reset(); }

    void startCenter(PortalHotKeyCenter::Options options = {})
    {
        openPortal();
        m_center = std::make_unique<PortalHotKeyCenter>(
            *m_portal, m_clock, directPasteShortcut, std::move(options));
        const auto installed = m_center->installHandler([this](const HotKeyCenter::Press& press) {
            m_heard.push_back(press.key.id);
            return HotKeyCenter::done;
        });
        EXPECT_EQ(installed.status, HotKeyCenter::done);
    }

    HotKeyCenter::Registration registerKey(quint32 id)
    {
        return m_center->registerKey(keyCodes.at(id - 1), optionShift, {.signature = 1, .id = id});
    }

    /// Registers the keys 1 to 3 in one go.
    std::vector<HotKeyCenter::Registration> registerAll()
    {
        std::vector<HotKeyCenter::Registration> registrations;
        for (quint32 id = 1; id <= keyCodes.size(); ++id) {
            registrations.push_back(registerKey(id));
        }
        return registrations;
    }
    static std::vector<Status> statuses(std::vector<HotKeyCenter::Registration> registrations)
    {
        std::vector<Status> statuses;
        for (auto& registration : registrations) {
            statuses.push_back(await(std::move(registration.status)));
        }
        return statuses;
    }
    void startHolding(PortalHotKeyCenter::Options options = {})
    {
        startCenter(std::move(options));
        ASSERT_THAT(
            statuses(registerAll()),
            ElementsAre(HotKeyCenter::done, HotKeyCenter::done, HotKeyCenter::done));
    }
    /// The ids of what was asked for, at each time.
    QList<QStringList> asked()
    {
        QList<QStringList> asked;
        for (const auto& call : mock().calls(bindShortcuts)) {
            QStringList ids;
            for (const auto& shortcut : qdbus_cast<QList<PortalShortcut>>(
                     call.arguments.value(1).value<QDBusArgument>())) {
                ids << shortcut.id;
            }
            asked << ids;
        }
        return asked;
    }

    /// Another run of the program, which remembers what the user refused in those before.
    void startRun(bool refusesByOther = false)
    {
        m_center.reset();
        startCenter(
            {.refusesByOther = refusesByOther,
             .refusal = std::make_unique<RestoreTokenFile>(
                 m_folder.filePath(u"refused"_s), std::make_unique<ThreadExecutor>("test"))});
    }

    QTemporaryDir m_folder;
    std::unique_ptr<PortalHotKeyCenter> m_center;
    std::vector<quint32> m_heard;
};

} // namespace tessly::test
