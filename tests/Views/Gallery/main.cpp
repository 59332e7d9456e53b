#include "PanelGallery.h"
#include "Picture.h"
#include "References.h"
#include "WindowGallery.h"

#include <QGuiApplication>
#include <QPalette>
#include <QStyleHints>

#include <cstdio>
#include <stdexcept>

using namespace Qt::StringLiterals;
using tessly::test::PanelGallery;
using tessly::test::WindowGallery;

namespace {

void photographAll(const QDir& folder, const QString& prefix)
{
    PanelGallery(PanelGallery::History::sample).photographSample(folder, prefix);
    PanelGallery(PanelGallery::History::none)
        .photographOthers(folder, prefix + u"clipboard-is-empty"_s);
    PanelGallery(PanelGallery::History::hostile)
        .photographOthers(folder, prefix + u"hostile-contents"_s);
    WindowGallery().photograph(folder, prefix);
}

int run(const QStringList& arguments)
{
    if (arguments.size() == 1) {
        const PanelGallery gallery(PanelGallery::History::sample);
        return QGuiApplication::exec();
    }
    const QDir folder(arguments.at(1));
    if (!folder.mkpath(u"."_s)) {
        throw std::runtime_error("cannot make " + folder.path().toStdString());
    }
    const QString what = arguments.value(2);
    if (what.isEmpty()) {
        // A cursor that comes and goes would be in some of them.
        QGuiApplication::styleHints()->setCursorFlashTime(0);
        photographAll(folder, {});
        QGuiApplication::setPalette(tessly::test::darkPalette());
        photographAll(folder, u"dark-"_s);
    } else if (what == u"--to"_s && arguments.size() == 4) {
        tessly::test::writeReferences(folder, arguments.at(3));
    } else if (what == u"--like"_s && arguments.size() == 4) {
        return tessly::test::agreesWithReferences(folder, arguments.at(3)) ? 0 : 1;
    } else {
        throw std::runtime_error(
            "usage: tessly_gallery [FOLDER [--to REFERENCES | --like REFERENCES]]");
    }
    return 0;
}

} // namespace

// Shows the panel with a sample history; with a folder, writes pictures of all states of all
// windows into it, light and dark; with a second one, makes references of these pictures there, or
// tells which are not like their references.
int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    try {
        return run(QGuiApplication::arguments());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
}
