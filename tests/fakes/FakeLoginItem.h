#pragma once

#include "LoginItem.h"

#include <QString>
#include <QStringList>

#include <stdexcept>

namespace tessly::test {

/// A login item in memory.
class FakeLoginItem final : public LoginItem
{
public:
    /// What a registration that fails throws.
    class Failure final : public std::runtime_error
    {
    public:
        using std::runtime_error::runtime_error;
    };

    void setStatus(Status status) { m_status = status; }
    /// These operations fail from now on.
    void failRegistering(bool fails = true) { m_failsRegistering = fails; }
    void failUnregistering(bool fails = true) { m_failsUnregistering = fails; }

    /// "register" and "unregister", in order, failed ones too.
    [[nodiscard]] const QStringList& calls() const { return m_calls; }
    void forgetCalls() { m_calls.clear(); }

    [[nodiscard]] Status status() const override { return m_status; }
    void registerItem() override;
    void unregisterItem() override;

private:
    Status m_status = Status::notRegistered;
    bool m_failsRegistering = false;
    bool m_failsUnregistering = false;
    QStringList m_calls;
};

} // namespace tessly::test
