#pragma once

#include "ViewPlugin.h"

#include <memory>

namespace tessly {

/// Loads the library with the program's windows when the first of them is needed. The library stays
/// loaded; views may outlive the loader. Main thread only.
class ViewLoader
{
public:
    /// Null, with the reason in the log, if the library cannot be loaded; the next call tries
    /// again.
    [[nodiscard]] ViewFactory* factory();

private:
    std::unique_ptr<ViewFactory> m_factory;
};

} // namespace tessly
