#include "QuickConfirmation.h"

#include "WindowGeometry.h"
#include "WindowModule.h"

#include <QCursor>
#include <QQuickItem>
#include <QScreen>

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

QuickConfirmation::QuickConfirmation()
    : m_window(std::make_unique<ViewWindow>())
{
    m_window->setFlags(
        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
        Qt::WindowStaysOnTopHint);
    m_window->setTitle(u"Clear History"_s);
    m_window->useIcon();
    m_window->setCloseRequested([this] { answer(false); });
    m_window->load(
        windowModuleFile(u"Confirmation.qml"_s), {{u"content"_s, QVariant::fromValue(&m_content)}});
    m_x11 = std::make_unique<X11ViewWindow>(*m_window, [] {});
    connect(&m_content, &ConfirmationContent::answered, this, &QuickConfirmation::answer);
}

QuickConfirmation::~QuickConfirmation() = default;

void QuickConfirmation::ask(
    QString message, QString confirmTitle, QString cancelTitle, Answered answered)
{
    if (!isLoaded()) {
        return;
    }
    if (!m_isAsking) {
        m_isAsking = true;
        m_answered = std::move(answered);
        m_content.message = std::move(message);
        m_content.confirmTitle = std::move(confirmTitle);
        m_content.cancelTitle = std::move(cancelTitle);
        Q_EMIT m_content.changed();
        place();
        m_window->show();
    }
    m_window->bringToFront();
    m_x11->activate();
}

void QuickConfirmation::place()
{
    QScreen* const screen = screenNear(QCursor::pos());
    if (screen == nullptr) {
        return;
    }
    const QQuickItem& root = *m_window->rootObject();
    const QSizeF size(root.implicitWidth(), root.implicitHeight());
    const QRect geometry = centredGeometry(size.toSize(), screen->availableGeometry());
    m_window->setScreen(screen);
    m_window->setMinimumSize(geometry.size());
    m_window->setMaximumSize(geometry.size());
    m_window->setGeometry(geometry);
}

void QuickConfirmation::answer(bool confirmed)
{
    if (!std::exchange(m_isAsking, false)) {
        return;
    }
    m_window->hide();
    // The press is still on the stack of a window that whoever is told may want to be rid of.
    QMetaObject::invokeMethod(
        this,
        [answered = std::exchange(m_answered, {}), confirmed] {
            if (answered) {
                answered(confirmed);
            }
        },
        Qt::QueuedConnection);
}

} // namespace tessly
