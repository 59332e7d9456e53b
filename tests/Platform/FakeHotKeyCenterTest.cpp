#include "FakeHotKeyCenter.h"

#include "contract/HotKeyCenterContract.h"

namespace tessly::test {

namespace {

class InMemory
{
public:
    HotKeyCenter& center() { return *m_center; }
    void endCenter()
    {
        for (const auto& held : m_center->held()) {
            m_freed.insert(held.combination);
        }
        m_center.reset();
    }
    void press(quint32 keyCode, quint32 modifiers) { m_center->press({keyCode, modifiers}); }
    bool takeElsewhere(quint32 keyCode, quint32 modifiers)
    {
        return m_center ? m_center->takeElsewhere({keyCode, modifiers})
                        : m_freed.erase({keyCode, modifiers}) == 1;
    }
    void releaseElsewhere(quint32 keyCode, quint32 modifiers)
    {
        m_center->releaseElsewhere({keyCode, modifiers});
    }
    static void settle() { QCoreApplication::processEvents(QEventLoop::AllEvents, 1000); }

private:
    std::unique_ptr<FakeHotKeyCenter> m_center = std::make_unique<FakeHotKeyCenter>();
    std::set<FakeHotKeyCenter::Combination> m_freed;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, HotKeyCenterContract, InMemory);

} // namespace

} // namespace tessly::test
