#pragma once

#include <QByteArray>

namespace tessly {

/// Bytes that one process hands to another by a descriptor, however many there are, where a message
/// of the bus has its limit. Nobody can change them or cut them short any more, so that they may be
/// looked at where they are. Any thread; what is refused is thrown as std::system_error.
class SealedMemory
{
public:
    /// A descriptor of a copy of the bytes. It is the caller's.
    [[nodiscard]] static int make(QByteArrayView bytes);

    /// Takes what `make` has made, perhaps in another process, of `largest` bytes at the most, and
    /// nothing else that a descriptor may be. Reads nothing yet. The descriptor stays the caller's,
    /// and may be closed.
    SealedMemory(int descriptor, qint64 largest);
    ~SealedMemory();
    SealedMemory(const SealedMemory&) = delete;
    SealedMemory& operator=(const SealedMemory&) = delete;

    [[nodiscard]] QByteArrayView bytes() const;

private:
    void* m_address = nullptr;
    qsizetype m_size = 0;
};

} // namespace tessly
