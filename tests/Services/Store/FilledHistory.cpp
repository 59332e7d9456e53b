#include "FilledHistory.h"

#include "AppPaths.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly)) {
        throw std::runtime_error("a file cannot be read");
    }
    return file.readAll();
}

} // namespace

void fillUsually(HistoryFile& history)
{
    history.open();
    for (int i = 0; i < 14; ++i) {
        history.saveText("text " + QByteArray::number(i) + QByteArray(1500, 'x'));
    }
    history.saveText("pinned");
    history.database().setPinned(true, idOf(history, u"pinned"_s));
    history.saveText(secretWord + ' ' + QByteArray(30'000, 'y'));
    history.saveText("last");
    history.database().scrub();
    history.close();
}

void fillWithMany(HistoryFile& history)
{
    history.open();
    for (int i = 0; i < 1040; ++i) {
        history.saveText("text " + QByteArray::number(i));
    }
    history.database().setPinned(true, idOf(history, u"text 7"_s));
    history.database().scrub();
    history.close();
}

void fillAndDamage(HistoryFile& history)
{
    history.open();
    for (int i = 0; i < 140; ++i) {
        history.saveText("text " + QByteArray::number(i) + QByteArray(300, 'x'));
    }
    history.database().setPinned(true, idOf(history, look(history)[3].section(u' ', 0, 1)));
    history.database().scrub();
    history.close();
    // A page of the table.
    QByteArray bytes = bytesOf(history.path());
    constexpr qsizetype size = HistoryFile::pageSize;
    bytes.replace(bytes.indexOf("text 20x") / size * size, size, QByteArray(size, '\x55'));
    QFile file(history.path());
    if (!file.open(QFile::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw std::runtime_error("a file cannot be written");
    }
    file.close();
    if (!AppPaths::recoverDatabaseFiles(history.folder())) {
        throw std::runtime_error("nothing was set aside");
    }
    history.open();
    history.close();
}

QStringList look(HistoryFile& history)
{
    QStringList lines;
    for (const Clip& clip : history.database().search({}, std::nullopt, -1)) {
        // More of it would fill pages where a test fails.
        lines.append(u"%1 %2 %3 %4 %5"_s.arg(clip.payload.previewLine().left(12))
                         .arg(clip.isPinned)
                         .arg(clip.pinOrder.value_or(-1))
                         .arg(clip.copyCount)
                         .arg(clip.lastUsedAt, 0, 'f'));
    }
    return lines;
}

QUuid idOf(HistoryFile& history, const QString& preview)
{
    for (const Clip& clip : history.database().search({}, std::nullopt, -1)) {
        if (clip.payload.previewLine().startsWith(preview)) {
            return clip.id;
        }
    }
    throw std::runtime_error("no such clip");
}

bool isSecretInFiles(const HistoryFile& history)
{
    const QDir folder(history.folder());
    const QStringList names = folder.entryList(QDir::Files);
    return std::ranges::any_of(names, [&](const QString& name) {
        return bytesOf(folder.filePath(name)).contains(secretWord);
    });
}

QString unfinishedRescue(const HistoryFile& history)
{
    const auto folder = AppPaths::unfinishedRecovery(history.folder());
    return folder ? QDir(*folder).filePath(u"history.sqlite"_s) : QString();
}

} // namespace tessly::test
