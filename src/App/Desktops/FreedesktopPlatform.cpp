#include "FreedesktopPlatform.h"

#include "PortalSupport.h"

#include <QGuiApplication>

namespace tessly {

FreedesktopPlatform::FreedesktopPlatform(const DesktopChoice& choice, Clock& clock)
    : m_protocols(choice.protocols)
    , m_appearance(connectAppearance, clock)
{
    QObject::connect(&m_appearance, &DesktopAppearance::changed, &m_appearance, [this] {
        QGuiApplication::setPalette(m_appearance.palette());
    });
}

FreedesktopPlatform::~FreedesktopPlatform() = default;

} // namespace tessly
