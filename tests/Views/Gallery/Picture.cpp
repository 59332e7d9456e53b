#include "Picture.h"

#include <QImage>
#include <QtTest/QTest>

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

// Longer than any motion takes to begin or to go on, in milliseconds.
constexpr int settled = 250;
// Something moves all the time, if it comes to that.
constexpr int attempts = 40;

} // namespace

void savePicture(QQuickWindow& window, const QDir& folder, const QString& name)
{
    QImage picture = window.grabWindow();
    for (int attempt = 0; attempt < attempts; ++attempt) {
        QTest::qWait(settled);
        if (const QImage before = std::exchange(picture, window.grabWindow()); before == picture) {
            break;
        }
    }
    const QString path = folder.filePath(name + u".png"_s);
    if (!picture.save(path)) {
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
