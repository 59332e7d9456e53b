#include "Picture.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

// Longer than any motion.
constexpr int settled = 250;

} // namespace

void savePicture(QQuickWindow& window, const QDir& folder, const QString& name)
{
    QTest::qWait(settled);
    const QString path = folder.filePath(name + u".png"_s);
    if (!window.grabWindow().save(path)) {
        qWarning("cannot write %s", qPrintable(path));
    }
}

QPalette darkPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x20, 0x20, 0x22));
    palette.setColor(QPalette::WindowText, Qt::white);
    palette.setColor(QPalette::Highlight, QColor(0x3D, 0xAE, 0xE9));
    return palette;
}

} // namespace tessly::test
