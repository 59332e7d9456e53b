#include "LogCapture.h"

#include <algorithm>
#include <iterator>

namespace tessly::test {

LogCapture* LogCapture::s_current = nullptr;

LogCapture::LogCapture()
{
    s_current = this;
    m_previous = qInstallMessageHandler(&LogCapture::take);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    s_current = nullptr;
}

std::vector<LogCapture::Line> LogCapture::lines(const QString& category) const
{
    const std::scoped_lock lock(m_mutex);
    std::vector<Line> found;
    std::ranges::copy_if(m_lines, std::back_inserter(found), [&category](const Line& line) {
        return line.category == category;
    });
    return found;
}

void LogCapture::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_lines.clear();
}

void LogCapture::take(QtMsgType level, const QMessageLogContext& context, const QString& text)
{
    const std::scoped_lock lock(s_current->m_mutex);
    s_current->m_lines.push_back({level, QString::fromUtf8(context.category), text});
}

} // namespace tessly::test
