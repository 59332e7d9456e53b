// An installed application's desktop entry. Fields: a class of windows, the entry.

#include "DesktopEntries.h"
#include "FuzzInput.h"
#include "MemoryFolder.h"

#include <QFile>

using namespace Qt::StringLiterals;
using namespace tessly;
using namespace tessly::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const test::MemoryFolder folder;
    FuzzInput input(data, size);
    const QString windowClass = QString::fromUtf8(input.next());
    const QByteArray text = input.rest().join('\xff');
    {
        QFile file(folder.filePath(u"org.example.App.desktop"_s));
        require(file.open(QFile::WriteOnly) && file.write(text) == text.size(), "it is written");
    }
    DesktopEntries entries({folder.path()});
    const auto known = entries.withID(u"org.example.app"_s);
    require(!known || known->id == "org.example.App"_L1, "an entry has the id of its file");
    require(entries.withID(u"org.example.App.desktop"_s) == known, "the id's form does not matter");
    const auto claimed = entries.withStartupWMClass(windowClass);
    require(!claimed || claimed == known, "there is one entry");
    const auto ofWindow = entries.ofWindow(windowClass, windowClass, windowClass);
    require(!claimed || ofWindow.has_value(), "a window that is claimed has an entry");
    return 0;
}
