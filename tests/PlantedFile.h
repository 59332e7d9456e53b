#pragma once

#include <QFile>
#include <QString>

#include <gtest/gtest.h>

#include <array>
#include <sys/stat.h>
#include <unistd.h>

namespace tessly::test {

/// What somebody may have put in the place of a file of the program's own.
enum class Planted { link, linkToNothing, pipe, folder, fileOfAnother };

inline constexpr std::array everyPlanted = {
    Planted::link, Planted::linkToNothing, Planted::pipe, Planted::folder, Planted::fileOfAnother};

/// Something in the place of a file, and the file that a link there leads to, which must stay as it
/// is.
class PlantedFile
{
public:
    /// `victim` is made with others' rights; nothing may be at either path.
    PlantedFile(Planted what, const QString& path, const QString& victim)
        : m_what(what)
        , m_path(QFile::encodeName(path))
        , m_victim(victim)
    {
        QFile file(m_victim);
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(victimBytes);
        file.close();
        EXPECT_EQ(::chmod(QFile::encodeName(m_victim).constData(), 0644), 0);
        plant();
    }

    /// Only the superuser can make a file another's.
    [[nodiscard]] bool isPlanted() const { return m_isPlanted; }

    /// Whether there is something for those who follow links.
    [[nodiscard]] bool exists() const { return m_what != Planted::linkToNothing; }

    /// Why it is refused.
    [[nodiscard]] QString reason() const
    {
        switch (m_what) {
        case Planted::link:
        case Planted::linkToNothing:
            return QStringLiteral("is a symbolic link");
        case Planted::pipe:
        case Planted::folder:
            return QStringLiteral("is not an ordinary file");
        case Planted::fileOfAnother:
            return QStringLiteral("belongs to another user");
        }
        return {};
    }

    void expectUntouched() const
    {
        struct stat there{};
        ASSERT_EQ(::lstat(m_path.constData(), &there), 0);
        EXPECT_EQ(there.st_mode, m_planted.st_mode) << m_path.constData();
        EXPECT_EQ(there.st_ino, m_planted.st_ino) << m_path.constData();
        QFile file(m_victim);
        ASSERT_TRUE(file.open(QFile::ReadOnly));
        EXPECT_EQ(file.readAll(), victimBytes);
        struct stat victim{};
        ASSERT_EQ(::stat(QFile::encodeName(m_victim).constData(), &victim), 0);
        EXPECT_EQ(victim.st_mode & 07777U, 0644U);
    }

private:
    static constexpr const char* victimBytes = "precious";
    static constexpr uid_t nobody = 65534;

    void plant()
    {
        const QByteArray victim = QFile::encodeName(m_victim);
        switch (m_what) {
        case Planted::link:
            EXPECT_EQ(::symlink(victim.constData(), m_path.constData()), 0);
            break;
        case Planted::linkToNothing:
            EXPECT_EQ(::symlink("nowhere/at-all", m_path.constData()), 0);
            break;
        case Planted::pipe:
            EXPECT_EQ(::mkfifo(m_path.constData(), 0644), 0);
            break;
        case Planted::folder:
            EXPECT_EQ(::mkdir(m_path.constData(), 0755), 0);
            break;
        case Planted::fileOfAnother: {
            QFile file(QFile::decodeName(m_path));
            EXPECT_TRUE(file.open(QFile::WriteOnly));
            m_isPlanted = ::chown(m_path.constData(), nobody, nobody) == 0;
            break;
        }
        }
        EXPECT_EQ(::lstat(m_path.constData(), &m_planted), 0);
    }

    Planted m_what;
    QByteArray m_path;
    QString m_victim;
    bool m_isPlanted = true;
    struct stat m_planted{};
};

} // namespace tessly::test
