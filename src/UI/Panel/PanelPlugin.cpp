#include "PanelPlugin.h"

#include "PanelModel.h"
#include "QuickPanelView.h"

#include <memory>
#include <type_traits>

extern "C" Q_DECL_EXPORT tessly::PanelView* tesslyCreatePanelView(tessly::PanelModel* model)
{
    auto view = std::make_unique<tessly::QuickPanelView>(*model);
    return view->isLoaded() ? view.release() : nullptr;
}

static_assert(std::is_same_v<decltype(&tesslyCreatePanelView), tessly::CreatePanelView>);
