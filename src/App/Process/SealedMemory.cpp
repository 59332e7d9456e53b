#include "SealedMemory.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tessly {

namespace {

constexpr int seals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

[[noreturn]] void fail(int error)
{
    throw std::system_error(error, std::generic_category());
}

bool writeAll(int descriptor, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t count =
            ::write(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes = bytes.sliced(std::max<ssize_t>(count, 0));
    }
    return true;
}

} // namespace

int SealedMemory::make(QByteArrayView bytes)
{
    const int descriptor = ::memfd_create("tessly", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (descriptor < 0) {
        fail(errno);
    }
    if (!writeAll(descriptor, bytes) || ::fcntl(descriptor, F_ADD_SEALS, seals) != 0) {
        const int error = errno;
        ::close(descriptor);
        fail(error);
    }
    return descriptor;
}

SealedMemory::SealedMemory(int descriptor, qint64 largest)
{
    const int found = ::fcntl(descriptor, F_GET_SEALS);
    if (found < 0 || (found & seals) != seals) {
        fail(EINVAL);
    }
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        fail(errno);
    }
    if (status.st_size > largest) {
        fail(EFBIG);
    }
    m_size = status.st_size;
    if (m_size == 0) {
        return;
    }
    m_address =
        ::mmap(nullptr, static_cast<std::size_t>(m_size), PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (m_address == MAP_FAILED) {
        fail(errno);
    }
}

SealedMemory::~SealedMemory()
{
    if (m_size > 0) {
        ::munmap(m_address, static_cast<std::size_t>(m_size));
    }
}

QByteArrayView SealedMemory::bytes() const
{
    return {static_cast<const char*>(m_address), m_size};
}

} // namespace tessly
