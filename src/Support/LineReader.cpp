#include "LineReader.h"

#include "FileError.h"

#include <cerrno>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

constexpr qsizetype pieceSize = qsizetype(256) * 1024;

} // namespace

LineReader::LineReader(int descriptor, QString name, qsizetype longest, char separator)
    : m_descriptor(descriptor)
    , m_name(std::move(name))
    , m_longest(longest)
    , m_separator(separator)
{
}

LineReader::Line LineReader::next(QByteArray& text)
{
    const qsizetype begin = text.size();
    bool isThere = false;
    bool isTooLong = false;
    while (m_read < m_piece.size() || fill()) {
        if (!std::exchange(isThere, true)) {
            ++m_number;
        }
        const qsizetype end = m_piece.indexOf(m_separator, m_read);
        const qsizetype length = (end < 0 ? m_piece.size() : end) - m_read;
        isTooLong = isTooLong || text.size() - begin + length > m_longest;
        if (!isTooLong) {
            text.append(m_piece.constData() + m_read, length);
        }
        m_read += length + (end < 0 ? 0 : 1);
        if (end >= 0) {
            break;
        }
    }
    if (isTooLong) {
        text.truncate(begin);
        return Line::tooLong;
    }
    return isThere ? Line::read : Line::none;
}

bool LineReader::fill()
{
    m_piece.resize(pieceSize);
    m_read = 0;
    ssize_t count = 0;
    do {
        count = ::read(m_descriptor, m_piece.data(), static_cast<std::size_t>(pieceSize));
    } while (count < 0 && errno == EINTR);
    m_piece.truncate(std::max<ssize_t>(count, 0));
    if (count < 0) {
        throw FileError(u"read"_s, m_name, std::errc(errno));
    }
    return count > 0;
}

} // namespace tessly
