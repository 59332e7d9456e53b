#include "AppPaths.h"

#include "FileError.h"
#include "PrivateFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <array>
#include <cerrno>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace tessly::AppPaths {

namespace {

Q_LOGGING_CATEGORY(lcAppPaths, "com.brackmoor.tessly.AppPaths")

constexpr QStringView databaseName = u"history.sqlite";
constexpr std::array databaseFiles = {
    databaseName,
    QStringView(u"history.sqlite-wal"),
    QStringView(u"history.sqlite-shm"),
    QStringView(u"history.sqlite-journal"),
};

QString inFolder(const QString& folder, QStringView name)
{
    return QDir(folder).filePath(name.toString());
}

QString recoveredHistory(const QString& dataFolder)
{
    return inFolder(dataFolder, u"Recovered History");
}

/// The mark of a rescue folder that is not finished. Hidden: the folder is the user's to look into.
QString markIn(const QString& rescueFolder)
{
    return inFolder(rescueFolder, u".unfinished");
}

void mark(const QString& rescueFolder)
{
    const QString file = markIn(rescueFolder);
    createPrivateFile(file);
    const int refusal = errno;
    if (!QFileInfo::exists(file)) {
        throw FileError(u"create the file"_s, file, std::errc(refusal));
    }
}

/// What an earlier program, or whoever copied a rescue back, has left open to others.
void protectRescues(const QString& dataFolder)
{
    const QString recovered = recoveredHistory(dataFolder);
    if (!QFileInfo(recovered).isDir()) {
        return;
    }
    try {
        makeFolderPrivate(recovered);
        const QDir::Filters own = QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks;
        for (const QFileInfo& rescue : QDir(recovered).entryInfoList(own | QDir::Dirs)) {
            makeFolderPrivate(rescue.filePath());
            for (const QFileInfo& file : QDir(rescue.filePath()).entryInfoList(own | QDir::Files)) {
                if (!makeFilePrivate(file.filePath())) {
                    qCWarning(
                        lcAppPaths, "Others may be able to read “%s”",
                        qUtf8Printable(file.filePath()));
                }
            }
        }
    } catch (const FileError& error) {
        // They are no part of the history that is about to be opened.
        qCWarning(lcAppPaths, "%s", error.what());
    }
}

void move(const QString& file, const QString& destination)
{
    if (QFileInfo::exists(destination)) {
        throw FileError(u"move a file to"_s, destination, std::errc::file_exists);
    }
    const QByteArray from = QFile::encodeName(file);
    const QByteArray to = QFile::encodeName(destination);
    if (std::rename(from.constData(), to.constData()) != 0) {
        throw FileError(u"move the file"_s, file, std::errc(errno));
    }
}

} // namespace

QString applicationSupportDirectory()
{
    // A relative path there is to be ignored, by the rules of the variable.
    QString data = qEnvironmentVariable("XDG_DATA_HOME");
    if (!QDir::isAbsolutePath(data)) {
        data = inFolder(QDir::homePath(), u".local/share");
    }
    return inFolder(data, u"Tessly");
}

QString databasePath()
{
    return inFolder(applicationSupportDirectory(), databaseName);
}

QString settingsPath()
{
    return inFolder(
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
        u"com.brackmoor.tessly.ini"_s);
}

void prepareDirectories()
{
    const QString folder = applicationSupportDirectory();
    preparePrivateFolder(folder, Parents::create);
    protectRescues(folder);
}

std::optional<QString> recoverDatabaseFiles(const QString& dataFolder)
{
    QStringList files;
    for (const QStringView name : databaseFiles) {
        const QString file = inFolder(dataFolder, name);
        if (QFileInfo::exists(file)) {
            files.append(file);
        }
    }
    if (files.isEmpty()) {
        return std::nullopt;
    }

    const QString recovered = recoveredHistory(dataFolder);
    if (QFileInfo(recovered).isSymLink()) {
        throw FileError(u"create the folder"_s, recovered, u"is a symbolic link"_s);
    }
    preparePrivateFolder(recovered, Parents::create);
    QString rescue = inFolder(
        recovered, recoveryFolderName(QDateTime::currentDateTimeUtc(), QUuid::createUuid()));
    // A name that leads elsewhere must not take the history along.
    if (QFileInfo(QDir::cleanPath(rescue)).path() != QDir::cleanPath(recovered)) {
        throw FileError(u"create the folder"_s, rescue, std::errc::invalid_argument);
    }
    createPrivateFolder(rescue);
    // Before anything is in it, so that there is no moment at which it could be missed.
    mark(rescue);
    for (const QString& file : files) {
        move(file, inFolder(rescue, QFileInfo(file).fileName()));
    }
    return rescue;
}

std::optional<QString> unfinishedRecovery(const QString& dataFolder)
{
    const QDir recovered(recoveredHistory(dataFolder));
    // Their names begin with their times.
    const QStringList folders =
        recovered.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::Reversed);
    for (const QString& name : folders) {
        const QString folder = recovered.filePath(name);
        if (QFileInfo::exists(markIn(folder))) {
            return folder;
        }
    }
    return std::nullopt;
}

bool finishRecovery(const QString& rescueFolder)
{
    const QString file = markIn(rescueFolder);
    return QFile::remove(file) || !QFileInfo::exists(file);
}

QString recoveryFolderName(const QDateTime& time, QUuid tag)
{
    return u"history-recovery-"_s + time.toUTC().toString(u"yyyy-MM-ddTHH-mm-ssZ") + u'-' +
           tag.toString(QUuid::WithoutBraces).first(8).toUpper();
}

} // namespace tessly::AppPaths
