#include "PanelGallery.h"

#include "Picture.h"
#include "SampleHistory.h"
#include "TestSupport.h"
#include "ThreadExecutor.h"

#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly::test {

namespace {

// Longer than the list takes to move up once a banner has gone.
constexpr int movedUp = 400;
// Longer than the rest after which a tool tip shows.
constexpr int toolTipShown = 900;

} // namespace

PanelGallery::PanelGallery(History history)
    : m_store(
          m_folder.filePath(u"history.sqlite"_s), [this] { return m_storeNow; },
          std::make_unique<ThreadExecutor>("store"))
    , m_model(
          {m_store, m_settings, m_pasteService, m_launchAtLogin, m_pasteboard, m_converter,
           m_workspace, m_clock})
    , m_preview({m_model, m_store, m_converter, m_files, m_clock})
    , m_panel({m_model, m_preview, m_pasteboard, m_clock})
    , m_view(m_panel)
{
    switch (history) {
    case History::none:
        break;
    case History::sample:
        saveSampleHistory(m_store, m_storeNow, m_clock.now());
        break;
    case History::hostile:
        saveHostileContents(m_store, m_storeNow, m_clock.now());
        break;
    }
    m_view.setEvents({
        .keyPressed = [](int, Qt::KeyboardModifiers) { return false; },
        .resignedKey = [] {},
        .didClose = [this] { m_model.setPanelPresented(false); },
    });
    m_model.closePanel = [this] { m_view.close(); };
    show();
}

PanelGallery::~PanelGallery()
{
    m_view.close();
}

void PanelGallery::show()
{
    m_model.setPanelPresented(true);
    reload();
    m_view.show(QRect(500, 0, 24, 24));
    m_view.activate();
}

void PanelGallery::photographSample(const QDir& folder, const QString& prefix)
{
    photograph(folder, prefix + u"mixed"_s);

    m_model.selectNext();
    photograph(folder, prefix + u"pinned-and-selected"_s);
    for (int i = 0; i < 9; ++i) {
        m_model.selectNext();
    }
    photograph(folder, prefix + u"ten-key-caps"_s);
    m_settings.setDirectPasteShortcuts(false);
    photograph(folder, prefix + u"no-key-caps"_s);
    m_settings.setDirectPasteShortcuts(true);

    for (const ClipKind kind : allClipKinds) {
        filter(rawValue(kind));
        photograph(folder, prefix + u"kind-"_s + rawValue(kind));
    }
    filter({});
    search(u"the"_s);
    photograph(folder, prefix + u"search"_s);
    search(u"nothing has this"_s);
    photograph(folder, prefix + u"no-matching-clips"_s);
    search({});

    setBanner(AppModel::BannerKind::information, u"Copied to the clipboard."_s);
    photograph(folder, prefix + u"banner-information"_s);
    setBanner(AppModel::BannerKind::warning, u"Copied. Allow Automatic paste in Settings."_s);
    photograph(folder, prefix + u"banner-warning"_s);
    setBanner(AppModel::BannerKind::error, u"Could not restore that clipboard item."_s);
    photograph(folder, prefix + u"banner-error"_s);
    setBanner(
        AppModel::BannerKind::warning,
        u"A damaged history database was preserved in ‘Recovered History 2026-03-01T10-20-30Z’. "
        "Tessly started with a fresh history."_s);
    photograph(folder, prefix + u"banner-long"_s);
    m_panel.togglePaused();
    photograph(folder, prefix + u"paused"_s);
    m_panel.togglePaused();
    m_model.setBanner(std::nullopt);
    QTest::qWait(movedUp);

    // A pointer selects once it has moved.
    QTest::mouseMove(&m_view.window(), QPoint(299, 260));
    QTest::mouseMove(&m_view.window(), QPoint(300, 260));
    QTest::mouseClick(&m_view.window(), Qt::RightButton, {}, QPoint(300, 260));
    QTest::keyClick(&m_view.window(), Qt::Key_Down);
    photograph(folder, prefix + u"menu"_s);
    QTest::keyClick(&m_view.window(), Qt::Key_Escape);

    QTest::mouseMove(&m_view.window(), QPoint(120, 540));
    QTest::mouseMove(&m_view.window(), QPoint(121, 541));
    QTest::qWait(toolTipShown);
    photograph(folder, prefix + u"tool-tip"_s);
}

void PanelGallery::photographOthers(const QDir& folder, const QString& name)
{
    photograph(folder, name);
}

void PanelGallery::photograph(const QDir& folder, const QString& name)
{
    savePicture(m_view.window(), folder, name);
}

void PanelGallery::reload()
{
    m_model.reload(AppModel::Debounce::no);
    // The store answers operations in their order: this one after the reload's.
    await(m_store.statistics());
    QTest::qWait(20);
}

void PanelGallery::filter(const QString& kind)
{
    m_panel.chooseKind(kind);
    reload();
}

void PanelGallery::search(const QString& query)
{
    m_model.setQuery(query);
    reload();
}

void PanelGallery::setBanner(AppModel::BannerKind kind, const QString& message)
{
    m_model.setBanner(AppModel::Banner{message, kind});
}

} // namespace tessly::test
