#include "FolderSnapshot.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <stdexcept>

namespace tessly::test {

namespace {

QStringList filesOf(const QString& folder)
{
    QStringList paths;
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        paths.append(QDir(folder).relativeFilePath(files.next()));
    }
    return paths;
}

} // namespace

FolderSnapshot::FolderSnapshot(const QString& folder)
    : m_folder(folder)
{
    for (const QString& path : filesOf(folder)) {
        QFile file(QDir(folder).filePath(path));
        if (!file.open(QFile::ReadOnly)) {
            throw std::runtime_error("a file cannot be read");
        }
        m_files.insert(path, file.readAll());
    }
}

void FolderSnapshot::restore() const
{
    for (const QString& path : filesOf(m_folder)) {
        if (!m_files.contains(path)) {
            QFile::remove(QDir(m_folder).filePath(path));
        }
    }
    for (auto entry = m_files.begin(); entry != m_files.end(); ++entry) {
        QFile file(QDir(m_folder).filePath(entry.key()));
        if (!file.open(QFile::WriteOnly) || file.write(entry.value()) != entry.value().size()) {
            throw std::runtime_error("a file cannot be written");
        }
    }
}

} // namespace tessly::test
