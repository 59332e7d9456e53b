#include "PanelGallery.h"

#include <QGuiApplication>

#include <cstdio>

using tessly::test::PanelGallery;

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
    return 0;
}
