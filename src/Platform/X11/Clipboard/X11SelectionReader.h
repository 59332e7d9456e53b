#pragma once

#include "X11SelectionTransfer.h"

#include <deque>
#include <list>
#include <map>
#include <memory>

namespace tessly {

/// Converts a selection for its reader: one conversion at a time as far as one owner is concerned,
/// each into a property of its own, so that what an owner sends late never lands in another's
/// transfer. Loop thread only.
class X11SelectionReader
{
public:
    /// `window` must receive PropertyChange events.
    X11SelectionReader(X11EventLoop& loop, xcb_window_t window);

    /// Starts once the conversions before it are through with the owner. Times out where that takes
    /// until its deadline.
    void convert(X11Conversion conversion, X11Conversion::Done done);

    /// Answers everything asked of the owner so far with `end`: what follows is asked of another.
    void beginOwner(X11Conversion::End end);

    /// The owner went away: ends what cannot be finished any more.
    void ownerLeft();

    void handle(const xcb_selection_notify_event_t& event);
    void handle(const xcb_property_notify_event_t& event);

private:
    using Transfer = std::shared_ptr<X11SelectionTransfer>;
    struct Waiting
    {
        X11Conversion conversion;
        X11Conversion::Done done;
        X11EventLoop::TimerID timer;
    };

    void advance();
    void start(Waiting waiting);
    void endWaiting(X11Conversion::End end);
    [[nodiscard]] Transfer transferOf(const xcb_selection_notify_event_t& event) const;
    void makeProperty();

    X11EventLoop& m_loop;
    const xcb_window_t m_window;
    std::list<Waiting> m_waiting;
    /// With the present owner; the last that was started.
    Transfer m_current;
    /// All that are not over, by property.
    std::map<xcb_atom_t, Transfer> m_transfers;
    /// The one that has been free for longest in front.
    std::deque<xcb_atom_t> m_freeProperties;
    int m_propertyCount = 0;
    bool m_makesProperty = false;
};

} // namespace tessly
