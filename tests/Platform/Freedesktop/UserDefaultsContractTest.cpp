#include "contract/UserDefaultsContract.h"

#include "FakeUserDefaults.h"
#include "IniUserDefaults.h"
#include "ThreadExecutor.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace tessly::test {
namespace {

class InMemory
{
public:
    UserDefaults& defaults() { return m_defaults; }
    void preset(const QString& key, const QString& text) { m_defaults.preset(key, text); }
    void reopen() { m_defaults.forgetRegisteredDefaults(); }

private:
    FakeUserDefaults m_defaults;
};

class InFile
{
public:
    UserDefaults& defaults() { return *m_defaults; }
    void preset(const QString& key, const QString& text)
    {
        QFile file(m_path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write((QStringLiteral("[General]\n") + key + u'=' + text + u'\n').toUtf8());
        file.close();
        reopen();
    }
    void reopen()
    {
        m_defaults.reset();
        m_defaults = open();
    }

private:
    [[nodiscard]] std::unique_ptr<IniUserDefaults> open() const
    {
        return std::make_unique<IniUserDefaults>(
            m_path, std::make_unique<ThreadExecutor>("settings"));
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(QStringLiteral("settings.ini"));
    std::unique_ptr<IniUserDefaults> m_defaults = open();
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, UserDefaultsContract, InMemory);
INSTANTIATE_TYPED_TEST_SUITE_P(Ini, UserDefaultsContract, InFile);

} // namespace
} // namespace tessly::test
