#pragma once

#include "QuickPastePanelController.h"

#include "AppModelFixture.h"
#include "FakeFileInspector.h"
#include "FakeOutsideClickMonitor.h"
#include "FakePanelView.h"
#include "Gate.h"

#include <gmock/gmock.h>

#include <QSignalSpy>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Call = FakePanelView::Call;
using KeepsOpen = QuickPastePanelController::KeepsOpen;

class QuickPastePanelControllerTest : public AppModelFixture
{
protected:
    QuickPastePanelControllerTest() { makeController(KeepsOpen::no); }

    void makeController(KeepsOpen keepsOpen)
    {
        m_controller = std::make_unique<QuickPastePanelController>(
            QuickPastePanelController::Dependencies{
                *m_model, m_preview, m_workspace, m_clicks, m_clock},
            [this] { return anchor(); },
            [this]() -> std::unique_ptr<PanelView> {
                ++m_viewsMade;
                if (m_viewIsMissing) {
                    return nullptr;
                }
                auto view = std::make_unique<FakePanelView>();
                m_view = view.get();
                return view;
            },
            keepsOpen);
    }

    QCoro::Task<std::optional<QRect>> anchor()
    {
        if (m_gate) {
            co_await m_gate->pass();
        }
        co_return m_anchor;
    }

    /// From now on the place has to be waited for.
    Gate& holdAnchor()
    {
        m_gate.emplace();
        m_gate->hold();
        return *m_gate;
    }

    void show()
    {
        m_controller->show();
        run();
    }

    std::shared_ptr<FakeRunningApplication> bringToFront(std::optional<QString> bundleIdentifier)
    {
        auto application = std::make_shared<FakeRunningApplication>(std::move(bundleIdentifier));
        m_workspace.setFrontmost(application);
        return application;
    }

    /// What the paste that has just been started put on the pasteboard.
    [[nodiscard]] PasteboardItem written() const
    {
        EXPECT_THAT(m_pasteboard.writes(), SizeIs(1));
        return m_pasteboard.writes().empty() ? PasteboardItem()
                                             : m_pasteboard.writes().front().front();
    }

    void expectClosed()
    {
        EXPECT_FALSE(m_controller->isShown());
        EXPECT_FALSE(m_model->isPanelPresented());
        EXPECT_EQ(m_clicks.watches(), 0U);
        EXPECT_FALSE(m_view->press(Qt::Key_Down)) << "keys are no longer handled";
    }

    void expectOpen()
    {
        EXPECT_TRUE(m_controller->isShown());
        EXPECT_TRUE(m_model->isPanelPresented());
    }

    FakeFileInspector m_files;
    PreviewModel m_preview{{*m_model, *m_store, m_converter, m_files, m_clock}};
    FakeOutsideClickMonitor m_clicks;
    std::optional<QRect> m_anchor = QRect(100, 0, 24, 24);
    std::optional<Gate> m_gate;
    bool m_viewIsMissing = false;
    int m_viewsMade = 0;
    /// The controller's.
    FakePanelView* m_view = nullptr;
    std::unique_ptr<QuickPastePanelController> m_controller;
};

} // namespace tessly::test
