#pragma once

#include <QByteArray>
#include <QString>

namespace tessly {

/// A file that only its owner can read and write, and that takes its place once it is whole: until
/// then, and if it never is, what is there stays as it is. It has no name before, where the file
/// system allows that, so that a process that is killed leaves nothing.
///
/// Everything that the file system refuses is thrown as FileError. Paths are bytes, as file names
/// are.
class ReplacementFile
{
public:
    enum class Creation {
        unnamedIfPossible,
        /// As on file systems that know no files without a name.
        named,
    };

    /// Follows a symbolic link in the place of the file. Refuses what cannot be replaced by a file:
    /// a folder, a pipe, a device, a link that leads nowhere.
    explicit ReplacementFile(
        const QByteArray& path, Creation creation = Creation::unnamedIfPossible);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    /// Where it goes: absolute, without links.
    [[nodiscard]] QString path() const;

    void write(QByteArrayView bytes);
    /// When this returns, the file is in its place and on the disk.
    void commit();

private:
    void create(Creation creation);
    void name();
    [[noreturn]] void fail() const;

    QByteArray m_path;
    // Beside it; has no file until `m_isNamed`.
    QByteArray m_temporaryPath;
    int m_descriptor = -1;
    bool m_isNamed = false;
};

} // namespace tessly
