#include "PanelGallery.h"
#include "Picture.h"
#include "WindowGallery.h"

#include <QGuiApplication>

#include <cstdio>

using tessly::test::PanelGallery;
using tessly::test::WindowGallery;

// Shows the panel with a sample history; with a folder as its argument, writes pictures of the
// panel in all its states into it.
int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 2) {
        const PanelGallery gallery(PanelGallery::History::sample);
        return QGuiApplication::exec();
    }
    const QDir folder(arguments.at(1));
    if (!folder.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "cannot make %s\n", qPrintable(folder.path()));
        return 1;
    }
    PanelGallery(PanelGallery::History::sample).photographSample(folder);
    PanelGallery(PanelGallery::History::none)
        .photographOthers(folder, QStringLiteral("clipboard-is-empty"));
    PanelGallery(PanelGallery::History::hostile)
        .photographOthers(folder, QStringLiteral("hostile-contents"));
    WindowGallery().photograph(folder, {});
    QGuiApplication::setPalette(tessly::test::darkPalette());
    WindowGallery().photograph(folder, QStringLiteral("dark-"));
    return 0;
}
