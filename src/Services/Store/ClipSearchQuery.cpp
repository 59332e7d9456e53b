#include "ClipSearchQuery.h"

#include <QStringList>
#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

QString inQuotes(QString text)
{
    // FTS5 takes a query to end at its first NUL.
    text.replace(QChar::Null, u' ');
    return u'"' + text.replace(u'"', u"\"\""_s) + u'"';
}

/// The first code point of a grapheme cluster decides for the whole, so that an accent stays with
/// its letter.
bool isLetterOrNumber(QStringView cluster)
{
    const char32_t first = cluster.size() > 1 && cluster[0].isHighSurrogate()
                               ? QChar::surrogateToUcs4(cluster[0], cluster[1])
                               : cluster[0].unicode();
    return QChar::isLetter(first) || QChar::isNumber(first);
}

/// The maximal runs of letters and numbers.
QStringList tokens(const QString& text)
{
    QStringList result;
    QString token;
    const auto endToken = [&] {
        if (!token.isEmpty()) {
            result.append(token);
            token.clear();
        }
    };
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype start = 0, end = clusters.toNextBoundary(); end >= 0;
         start = end, end = clusters.toNextBoundary()) {
        const QStringView cluster = QStringView(text).sliced(start, end - start);
        if (isLetterOrNumber(cluster)) {
            token += cluster;
        } else {
            endToken();
        }
    }
    endToken();
    return result;
}

} // namespace

QByteArray ftsQuery(const QString& text)
{
    QStringList terms;
    for (const QString& token : tokens(text.toLower())) {
        terms.append(inQuotes(token) + u'*');
    }
    return (terms.isEmpty() ? inQuotes(text) : terms.join(u" AND "_s)).toUtf8();
}

QByteArray likePattern(const QString& text)
{
    QString escaped = text;
    escaped.replace(u'\\', u"\\\\"_s).replace(u'%', u"\\%"_s).replace(u'_', u"\\_"_s);
    return (u'%' + escaped + u'%').toUtf8();
}

} // namespace tessly
