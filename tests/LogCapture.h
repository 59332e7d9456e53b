#pragma once

#include <QString>
#include <QtGlobal>

#include <mutex>
#include <ostream>
#include <vector>

namespace tessly::test {

/// While it lives, takes down what is logged, from any thread, in place of printing it. One at a
/// time.
class LogCapture
{
public:
    struct Line
    {
        QtMsgType level = QtDebugMsg;
        QString category;
        QString text;

        bool operator==(const Line&) const = default;
        friend std::ostream& operator<<(std::ostream& stream, const Line& line)
        {
            return stream << line.level << ' ' << line.category.toStdString() << ": "
                          << line.text.toStdString();
        }
    };

    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines of one category, in order.
    [[nodiscard]] std::vector<Line> lines(const QString& category) const;
    void clear();

private:
    static void take(QtMsgType level, const QMessageLogContext& context, const QString& text);

    static LogCapture* s_current;
    QtMessageHandler m_previous;
    mutable std::mutex m_mutex;
    std::vector<Line> m_lines;
};

} // namespace tessly::test
