#pragma once

#include <gtest/gtest.h>

#include <memory>

namespace tessly::test {

/// The session that all tests of a program share: starts when it is first asked for, and ends when
/// the last test has. To be added as an environment before the tests run.
template <typename Session>
class SharedSession final : public testing::Environment
{
public:
    [[nodiscard]] static SharedSession& add()
    {
        auto* const environment = new SharedSession;
        testing::AddGlobalTestEnvironment(environment);
        return *environment;
    }

    [[nodiscard]] Session& get()
    {
        if (!m_session) {
            m_session = std::make_unique<Session>();
        }
        return *m_session;
    }

    void TearDown() override { m_session.reset(); }

private:
    std::unique_ptr<Session> m_session;
};

} // namespace tessly::test
