#pragma once

#include <QFile>
#include <QString>

#include <stdexcept>
#include <unistd.h>

namespace tessly::test {

/// While it lives, this process has the rights of an ordinary user, whom permissions bind, also
/// when the tests run as root.
class OrdinaryUser
{
public:
    /// `folder` becomes that user's.
    explicit OrdinaryUser(const QString& folder)
    {
        if (::geteuid() != 0) {
            return;
        }
        if (::chown(QFile::encodeName(folder).constData(), nobody, nobody) != 0 ||
            ::seteuid(nobody) != 0) {
            throw std::runtime_error("cannot become an ordinary user");
        }
        m_wasRoot = true;
    }
    ~OrdinaryUser()
    {
        if (m_wasRoot && ::seteuid(0) != 0) {
            std::terminate();
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    bool m_wasRoot = false;
};

} // namespace tessly::test
