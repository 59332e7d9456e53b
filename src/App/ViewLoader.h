#pragma once

#include "ViewPlugin.h"

#include <QFile>

#include <memory>

namespace tessly {

/// Loads the library with the program's windows when the first of them is needed. The library stays
/// loaded; views may outlive the loader. Main thread only.
class ViewLoader
{
public:
    /// Takes hold of the library that belongs to this program: an update of both may put a newer
    /// one in its place while the program runs.
    ViewLoader();

    /// Null, with the reason in the log, if the library cannot be loaded; the next call tries
    /// again.
    [[nodiscard]] ViewFactory* factory();

private:
    QFile m_library;
    std::unique_ptr<ViewFactory> m_factory;
};

} // namespace tessly
