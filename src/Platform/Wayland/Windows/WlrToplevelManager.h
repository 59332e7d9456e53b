#pragma once

#include "WaylandToplevelManager.h"

#include <memory>
#include <vector>

struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace tessly {

/// The windows of a compositor that has zwlr_foreign_toplevel_manager_v1. Its first version has all
/// that is needed.
class WlrToplevelManager final : public WaylandToplevelManager
{
public:
    /// Null if the compositor does not have it.
    [[nodiscard]] static std::unique_ptr<WlrToplevelManager>
    find(const WaylandRegistry& registry, Events events);

    ~WlrToplevelManager() override;

private:
    class Handle;

    WlrToplevelManager(zwlr_foreign_toplevel_manager_v1* object, Events events);

    static void appeared(
        void* data, zwlr_foreign_toplevel_manager_v1* object,
        zwlr_foreign_toplevel_handle_v1* toplevel);
    static void finished(void* data, zwlr_foreign_toplevel_manager_v1* object);
    void closed(Handle* handle);

    /// Null once it is finished.
    zwlr_foreign_toplevel_manager_v1* m_object;
    Events m_events;
    std::vector<std::unique_ptr<Handle>> m_handles;
};

} // namespace tessly
