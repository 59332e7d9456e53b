#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace tessly::test {

/// A folder as it was, with all that is below it.
class FolderSnapshot
{
public:
    FolderSnapshot() = default;
    explicit FolderSnapshot(const QString& folder);

    /// Puts it back. The folders must still be there.
    void restore() const;
    /// The files, by their paths in the folder.
    [[nodiscard]] const QMap<QString, QByteArray>& files() const { return m_files; }

private:
    QString m_folder;
    QMap<QString, QByteArray> m_files;
};

} // namespace tessly::test
