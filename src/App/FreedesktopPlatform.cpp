#include "FreedesktopPlatform.h"

namespace tessly {

FreedesktopPlatform::FreedesktopPlatform(const DesktopChoice& choice)
    : m_protocols(choice.protocols)
{
}

FreedesktopPlatform::~FreedesktopPlatform() = default;

} // namespace tessly
