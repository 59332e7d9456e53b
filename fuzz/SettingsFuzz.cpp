// A settings file that somebody has edited. Fields: its text, a key and a value to be set.

#include "AppSettings.h"
#include "FuzzInput.h"
#include "IniFile.h"
#include "IniUserDefaults.h"
#include "MemoryFolder.h"
#include "fakes/InlineExecutor.h"

#include <QFile>

using namespace Qt::StringLiterals;
using namespace tessly;
using namespace tessly::fuzz;

namespace {

/// Letters only: those of the program have no others.
QString keyOf(const QByteArray& field)
{
    QString key = u"k"_s;
    for (const char character : field.left(20)) {
        key += QChar(u'a' + static_cast<unsigned char>(character) % 26);
    }
    return key;
}

void checkText(const QByteArray& text, const QString& key, const QString& value)
{
    IniFile file(text);
    QHash<QString, QString> expected = file.values();
    file.setValue(key, value);
    expected.insert(key, value);
    require(file.values() == expected, "one value is changed and no other");
    require(IniFile(file.text()).values() == expected, "what is written is read back");
    file.removeValue(key);
    expected.remove(key);
    require(file.values() == expected, "one value is removed and no other");
}

void checkSettings(const QByteArray& text, const QString& value)
{
    static const test::MemoryFolder folder;
    const QString path = folder.filePath(u"settings.ini"_s);
    {
        QFile file(path);
        require(file.open(QFile::WriteOnly) && file.write(text) == text.size(), "it is written");
    }
    const auto settingsOf = [](IniUserDefaults& defaults) {
        return std::make_unique<AppSettings>(defaults);
    };
    {
        IniUserDefaults defaults(path, std::make_unique<test::InlineExecutor>());
        const auto settings = settingsOf(defaults);
        require(
            settings->maxHistory() >= 10 && settings->maxHistory() <= 10'000,
            "a history's size has its bounds");
        require(settings->trimLimit() >= settings->maxHistory(), "nothing is trimmed by mistake");
        require(
            settings->maxItemSizeMB() >= 1 && settings->maxItemSizeMB() <= 250,
            "an entry's size has its bounds");
        (void)settings->ignoredBundleIDs();
        settings->setMaxHistory(77);
        settings->setIgnoredBundleIDsText(value);
        settings->setCaptureImages(false);
    }
    IniUserDefaults defaults(path, std::make_unique<test::InlineExecutor>());
    const auto settings = settingsOf(defaults);
    require(settings->maxHistory() == 77, "a number is kept");
    require(settings->ignoredBundleIDsText() == value, "a text is kept");
    require(!settings->captureImages(), "a switch is kept");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const QByteArray text = input.next();
    const QString key = keyOf(input.next());
    const QString value = QString::fromUtf8(input.rest().join('\xff'));
    checkText(text, key, value);
    checkSettings(text, value);
    return 0;
}
