#include "X11OutsideClickMonitor.h"

#include "X11Desktop.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <map>
#include <utility>

namespace tessly {

/// The watches. Used on the main thread; the loop thread only passes a weak pointer to it back.
class X11OutsideClickMonitor::State : public std::enable_shared_from_this<State>
{
public:
    explicit State(X11Desktop& desktop)
        : m_desktop(desktop)
    {
    }

    ~State()
    {
        if (!m_watches.empty()) {
            m_desktop.setClickHandler(nullptr);
        }
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    quint64 add(std::function<void()> pressed)
    {
        const auto id = m_nextID++;
        m_watches.emplace(id, std::move(pressed));
        if (m_watches.size() == 1) {
            // A click that is on its way here when the last watch ends is none of the next one's.
            m_desktop.setClickHandler([state = weak_from_this(), first = id] {
                QMetaObject::invokeMethod(
                    QCoreApplication::instance(),
                    [state, first] {
                        if (const auto living = state.lock()) {
                            living->tell(first);
                        }
                    },
                    Qt::QueuedConnection);
            });
            m_first = id;
        }
        return id;
    }

    void remove(quint64 id)
    {
        m_watches.erase(id);
        if (m_watches.empty()) {
            m_desktop.setClickHandler(nullptr);
        }
    }

private:
    void tell(quint64 first)
    {
        if (first != m_first) {
            return;
        }
        // A callback may end its own watch and others.
        const auto watches = m_watches;
        for (const auto& [id, pressed] : watches) {
            if (m_watches.contains(id)) {
                pressed();
            }
        }
    }

    X11Desktop& m_desktop;
    std::map<quint64, std::function<void()>> m_watches;
    quint64 m_nextID = 1;
    /// The watch with which listening began.
    quint64 m_first = 0;
};

class X11OutsideClickMonitor::Handle final : public OutsideClickMonitor::Watch
{
public:
    Handle(const std::shared_ptr<State>& state, std::function<void()> pressed)
        : m_state(state)
        , m_id(state->add(std::move(pressed)))
    {
    }
    ~Handle() override
    {
        if (const auto state = m_state.lock()) {
            state->remove(m_id);
        }
    }

private:
    std::weak_ptr<State> m_state;
    quint64 m_id;
};

X11OutsideClickMonitor::X11OutsideClickMonitor(X11Desktop& desktop)
    : m_state(std::make_shared<State>(desktop))
{
}

X11OutsideClickMonitor::~X11OutsideClickMonitor() = default;

std::unique_ptr<OutsideClickMonitor::Watch>
X11OutsideClickMonitor::watch(std::function<void()> pressed)
{
    return std::make_unique<Handle>(m_state, std::move(pressed));
}

} // namespace tessly
