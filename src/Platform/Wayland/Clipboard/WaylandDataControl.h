#pragma once

#include "WaylandRegistry.h"

#include <QByteArray>
#include <QByteArrayList>

#include <functional>
#include <memory>

struct wl_seat;

namespace tessly {

// Data control: what a compositor lets a program do that reads and writes the clipboard without a
// window. Two protocols do it, alike but for their names; this is what they have in common. Loop
// thread, or before the loop is started.

/// One content of the clipboard, as its owner offers it. Goes stale with that content, after which
/// asking is harmless and answered with nothing.
class WaylandDataOffer
{
public:
    /// No program offers this many types; of one that does, none are told.
    static constexpr qsizetype maximumTypes = 4096;

    WaylandDataOffer() = default;
    WaylandDataOffer(const WaylandDataOffer&) = delete;
    WaylandDataOffer& operator=(const WaylandDataOffer&) = delete;
    virtual ~WaylandDataOffer() = default;

    /// The names of what is offered, in the owner's order.
    [[nodiscard]] const QByteArrayList& types() const { return m_types; }
    [[nodiscard]] bool hasTooManyTypes() const { return m_hasTooManyTypes; }

    /// Has the owner write one of them into a file, usually the end of a pipe. The file can be
    /// closed here after that.
    virtual void receive(const QByteArray& type, int file) = 0;

protected:
    void addType(const char* type);

private:
    QByteArrayList m_types;
    bool m_hasTooManyTypes = false;
};

/// A content that this program offers. Withdrawn when it goes.
class WaylandDataSource
{
public:
    struct Events
    {
        /// Somebody wants this type, in this file, which is the callee's to close.
        std::function<void(const QByteArray& type, int file)> send;
        /// It is not the clipboard's content any more, or never becomes it. May destroy the source.
        std::function<void()> cancelled;
    };

    WaylandDataSource() = default;
    WaylandDataSource(const WaylandDataSource&) = delete;
    WaylandDataSource& operator=(const WaylandDataSource&) = delete;
    virtual ~WaylandDataSource() = default;
};

/// The clipboard of one seat.
class WaylandDataDevice
{
public:
    struct Events
    {
        /// The clipboard has a new content, or none (null): it was cleared, or its owner has gone
        /// away. Also called for the content that there is at first, if there is one.
        std::function<void(std::unique_ptr<WaylandDataOffer> offer)> selection;
        /// The same of PRIMARY, where the compositor has that. May be left out.
        std::function<void(std::unique_ptr<WaylandDataOffer> offer)> primarySelection = {};
        /// The seat is gone: nothing more is heard. Does not destroy the device.
        std::function<void()> finished;
    };

    WaylandDataDevice() = default;
    WaylandDataDevice(const WaylandDataDevice&) = delete;
    WaylandDataDevice& operator=(const WaylandDataDevice&) = delete;
    virtual ~WaylandDataDevice() = default;

    /// Makes a source the content of the clipboard; each can be so once. None: clears it.
    virtual void setSelection(WaylandDataSource* source) = 0;
    /// The same of PRIMARY; a source can be made the content of one of the two. Does nothing where
    /// there is no PRIMARY.
    virtual void setPrimarySelection(WaylandDataSource* source) = 0;
};

/// What the compositor offers of all this. The sources and devices live no longer.
class WaylandDataControl
{
public:
    /// By ext_data_control_manager_v1 where there is that, else by zwlr_data_control_manager_v1;
    /// null if there is neither.
    [[nodiscard]] static std::unique_ptr<WaylandDataControl> find(const WaylandRegistry& registry);

    WaylandDataControl() = default;
    WaylandDataControl(const WaylandDataControl&) = delete;
    WaylandDataControl& operator=(const WaylandDataControl&) = delete;
    virtual ~WaylandDataControl() = default;

    [[nodiscard]] virtual std::unique_ptr<WaylandDataDevice>
    device(wl_seat* seat, WaylandDataDevice::Events events) = 0;
    [[nodiscard]] virtual std::unique_ptr<WaylandDataSource>
    source(const QByteArrayList& types, WaylandDataSource::Events events) = 0;
};

} // namespace tessly
