#include "PanelLayer.h"

namespace tessly {

std::unique_ptr<PanelLayer> makePanelLayer(QWindow&)
{
    return nullptr;
}

} // namespace tessly
