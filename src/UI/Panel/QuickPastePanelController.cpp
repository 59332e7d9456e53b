#include "QuickPastePanelController.h"

#include "PanelKeyMap.h"

#include <QPointer>

#include <utility>

namespace tessly {

QuickPastePanelController::QuickPastePanelController(
    Dependencies dependencies, AnchorProvider anchorProvider, ViewFactory viewFactory,
    KeepsOpen keepsOpen, QObject* parent)
    : QObject(parent)
    , m_dependencies(dependencies)
    , m_anchorProvider(std::move(anchorProvider))
    , m_viewFactory(std::move(viewFactory))
    , m_keepsOpen(keepsOpen)
{
    const QPointer<QuickPastePanelController> self(this);
    m_dependencies.model.closePanel = [self] {
        if (self) {
            self->close();
        }
    };
    m_dependencies.model.showPanel = [self] {
        if (self) {
            self->show();
        }
    };
}

QuickPastePanelController::~QuickPastePanelController() = default;

void QuickPastePanelController::show()
{
    if (!isShown() && !m_opening) {
        open(this);
    }
}

QCoro::Task<> QuickPastePanelController::open(QPointer<QuickPastePanelController> self)
{
    const auto opening = std::make_shared<bool>();
    self->m_opening = opening;
    // Where the desktop tells of clicks by what lies under the panel, that has to be there first.
    self->watchOutsideClicks();
    const std::optional<QRect> anchor = co_await self->m_anchorProvider();
    // Meanwhile it may have been closed, and opened again.
    if (!self || self->m_opening != opening) {
        co_return;
    }
    self->m_opening.reset();
    if (anchor) {
        self->present(*anchor);
    } else {
        self->m_outsideClickWatch.reset();
    }
}

void QuickPastePanelController::present(const QRect& anchor)
{
    AppModel& model = m_dependencies.model;
    m_targetApplication = m_dependencies.workspace.frontmostApplication();
    if (m_targetApplication && m_targetApplication->bundleIdentifier() == ownBundleIdentifier) {
        m_targetApplication.reset();
    }
    model.setCurrentTargetApplication(m_targetApplication);
    model.setQuery({});
    model.setPanelPresented(true);
    model.reload(AppModel::Debounce::no);

    makeView();
    if (m_view) {
        m_view->show(anchor);
    }
    if (!isShown()) {
        presentationDidEnd();
        return;
    }
    if (m_keepsOpen == KeepsOpen::no) {
        m_isWatching = true;
    }
    m_view->activate();
}

void QuickPastePanelController::close()
{
    m_opening.reset();
    if (isShown()) {
        m_view->close();
    } else {
        presentationDidEnd();
    }
}

void QuickPastePanelController::toggle()
{
    if (isShown() || m_opening) {
        close();
    } else {
        show();
    }
}

void QuickPastePanelController::toggleByClick()
{
    if (!std::exchange(m_dismissal, nullptr)) {
        toggle();
    }
}

bool QuickPastePanelController::isShown() const
{
    return m_view && m_view->isShown();
}

void QuickPastePanelController::makeView()
{
    if (m_view) {
        return;
    }
    m_view = m_viewFactory();
    if (!m_view) {
        return;
    }
    const QPointer<QuickPastePanelController> self(this);
    m_view->setEvents({
        .keyPressed =
            [self](int key, Qt::KeyboardModifiers modifiers) {
                return self && self->m_isWatching && self->isShown() &&
                       self->handleKeyEvent(key, modifiers);
            },
        .resignedKey =
            [self] {
                if (self) {
                    self->dismiss();
                }
            },
        .didClose =
            [self] {
                if (self) {
                    self->presentationDidEnd();
                }
            },
    });
}

void QuickPastePanelController::watchOutsideClicks()
{
    if (m_keepsOpen == KeepsOpen::no && !m_outsideClickWatch) {
        // Closing ends the watch that is calling: it is closed from the event loop instead.
        m_outsideClickWatch = m_dependencies.outsideClicks.watch([self = QPointer(this)] {
            if (self) {
                QMetaObject::invokeMethod(
                    self, &QuickPastePanelController::dismiss, Qt::QueuedConnection);
            }
        });
    }
}

void QuickPastePanelController::dismiss()
{
    // The panel that was clicked beside may have gone since, by other ways.
    if (m_isWatching) {
        close();
        m_dismissal = m_dependencies.clock.after(clickLength, [this] { m_dismissal.reset(); });
    }
}

void QuickPastePanelController::pastePosition(int position)
{
    m_dependencies.model.pastePosition(position, m_targetApplication);
}

bool QuickPastePanelController::handleKeyEvent(int key, Qt::KeyboardModifiers modifiers)
{
    if (const auto position = directPastePosition(key, modifiers);
        position && m_dependencies.model.settings().directPasteShortcuts()) {
        pastePosition(*position);
        return true;
    }
    const auto action = panelAction(key, modifiers);
    if (!action) {
        return false;
    }
    AppModel& model = m_dependencies.model;
    // What is typed right before these keys comes first, also where the search still runs.
    const auto paste = [&](AppModel::PasteStyle style) {
        model.whenListed([&model, style, target = m_targetApplication] {
            if (const Clip* const clip = model.selectedClip(); clip != nullptr) {
                model.paste(*clip, style, target);
            }
        });
    };
    switch (*action) {
    case PanelAction::selectPrevious:
        model.selectPrevious();
        break;
    case PanelAction::selectNext:
        model.selectNext();
        break;
    case PanelAction::paste:
        paste(AppModel::PasteStyle::original);
        break;
    case PanelAction::pastePlainText:
        paste(AppModel::PasteStyle::plainTextOnly);
        break;
    case PanelAction::close:
        if (m_dependencies.preview.isShown()) {
            m_dependencies.preview.dismiss();
        } else {
            close();
        }
        break;
    case PanelAction::togglePin:
        model.whenListed([&model] { model.togglePin(); });
        break;
    case PanelAction::deleteSelected:
        model.whenListed([&model] { model.deleteSelected(); });
        break;
    case PanelAction::togglePreview:
        m_dependencies.preview.toggle();
        break;
    }
    return true;
}

void QuickPastePanelController::presentationDidEnd()
{
    m_isWatching = false;
    m_outsideClickWatch.reset();
    AppModel& model = m_dependencies.model;
    model.setPanelPresented(false);
    if (!model.query().isEmpty()) {
        // The next opening begins with the whole list, from its first frame on.
        model.setQuery({});
        model.reload(AppModel::Debounce::no);
    }
}

} // namespace tessly
