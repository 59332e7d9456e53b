#pragma once

#include "AppModel.h"
#include "Clock.h"
#include "OutsideClickMonitor.h"
#include "PanelView.h"
#include "PreviewModel.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QRect>

#include <functional>
#include <memory>
#include <optional>

namespace tessly {

/// Opens and closes the panel, decides which application a paste goes to, and turns keys into the
/// model's actions. Main thread only.
class QuickPastePanelController final : public QObject
{
    Q_OBJECT

public:
    /// Where the panel is shown (global, device-independent pixels); none if there is no place. The
    /// desktop may have to be asked.
    using AnchorProvider = std::function<QCoro::Task<std::optional<QRect>>()>;
    /// Makes the panel's window; asked at the first opening, so that a program that only records
    /// never loads it. Null if it cannot be made.
    using ViewFactory = std::function<std::unique_ptr<PanelView>()>;

    /// Stays open until closed explicitly, for tests of the interface.
    enum class KeepsOpen { no, forUITesting };

    struct Dependencies
    {
        AppModel& model;
        PreviewModel& preview;
        Workspace& workspace;
        OutsideClickMonitor& outsideClicks;
        Clock& clock;
    };

    /// How long a click that closes the panel takes, from its press to its release over the status
    /// item.
    static constexpr Clock::Duration clickLength = std::chrono::milliseconds(500);

    QuickPastePanelController(
        Dependencies dependencies, AnchorProvider anchorProvider, ViewFactory viewFactory,
        KeepsOpen keepsOpen, QObject* parent = nullptr);
    ~QuickPastePanelController() override;

    /// Nothing happens if the panel is up or about to be, or if there is no place for it.
    void show();
    void close();
    /// Opens the panel, or closes it.
    void toggle();
    /// The same by a click on the status item. Where the tray belongs to another program, the press
    /// has closed the panel already by the time the click is told: that click opens nothing.
    void toggleByClick();
    /// Pastes the entry at a position (1 to 10) of the whole history into the panel's target.
    void pastePosition(int position);
    [[nodiscard]] bool isShown() const;

private:
    static QCoro::Task<> open(QPointer<QuickPastePanelController> self);
    void present(const QRect& anchor);
    void makeView();
    void watchOutsideClicks();
    void dismiss();
    bool handleKeyEvent(int key, Qt::KeyboardModifiers modifiers);
    void presentationDidEnd();

    Dependencies m_dependencies;
    AnchorProvider m_anchorProvider;
    ViewFactory m_viewFactory;
    KeepsOpen m_keepsOpen;
    std::unique_ptr<PanelView> m_view;
    /// Of the opening for which a place is being looked for; null if none is.
    std::shared_ptr<bool> m_opening;
    /// Whether keys are handled and clicks and lost focus close the panel: while it is up, unless
    /// it is kept open.
    bool m_isWatching = false;
    /// From when a place is looked for on.
    std::unique_ptr<OutsideClickMonitor::Watch> m_outsideClickWatch;
    /// Runs for as long as the click may last that dismissed the panel.
    std::unique_ptr<Clock::Timer> m_dismissal;
    std::shared_ptr<RunningApplication> m_targetApplication;
};

} // namespace tessly
