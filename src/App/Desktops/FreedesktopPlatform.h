#pragma once

#include "AutostartLoginItem.h"
#include "DesktopAppearance.h"
#include "InstalledBundle.h"
#include "PlatformFactory.h"
#include "QtImageConverter.h"

namespace tessly {

/// What is the same on all desktops.
class FreedesktopPlatform : public DesktopPlatform
{
public:
    /// `clock` must outlive this.
    FreedesktopPlatform(const DesktopChoice& choice, Clock& clock);
    ~FreedesktopPlatform() override;

    ImageConverter& imageConverter() override { return m_imageConverter; }
    LoginItem& loginItem() override { return m_loginItem; }
    const Bundle& bundle() override { return m_bundle; }
    [[nodiscard]] QStringList protocols() const override { return m_protocols; }

private:
    QStringList m_protocols;
    DesktopAppearance m_appearance;
    QtImageConverter m_imageConverter;
    InstalledBundle m_bundle;
    AutostartLoginItem m_loginItem{m_bundle.bundlePath()};
};

} // namespace tessly
