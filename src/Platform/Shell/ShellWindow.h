#pragma once

#include "TrackedWindow.h"

#include <QtGlobal>

#include <utility>

namespace tessly {

/// A window that GNOME Shell told of. Main thread; what TrackedWindow has, any.
class ShellWindow final : public TrackedWindow
{
public:
    ShellWindow(quint64 id, Owner owner)
        : TrackedWindow(std::move(owner))
        , m_id(id)
    {
    }

    /// By which the shell knows it.
    [[nodiscard]] quint64 id() const { return m_id; }

private:
    const quint64 m_id;
};

} // namespace tessly
