#pragma once

#include "AppModel.h"
#include "FakeBundle.h"
#include "FakeFileInspector.h"
#include "FakeImageConverter.h"
#include "FakeKeyEventPoster.h"
#include "FakeLoginItem.h"
#include "FakePasteboard.h"
#include "FakeUserDefaults.h"
#include "FakeWorkspace.h"
#include "FixedDateClock.h"
#include "PanelModel.h"
#include "QuickPanelView.h"

#include <QDir>
#include <QTemporaryDir>

namespace tessly::test {

/// The real panel over a history of its own, brought into every state worth looking at.
class PanelGallery
{
public:
    enum class History { none, sample, hostile };

    explicit PanelGallery(History history);
    ~PanelGallery();
    PanelGallery(const PanelGallery&) = delete;
    PanelGallery& operator=(const PanelGallery&) = delete;

    /// Shows the panel and leaves it to whoever looks at it.
    void show();

    /// Pictures of the sample history, or one of the others, under the palette of the moment; their
    /// names begin with `prefix`.
    void photographSample(const QDir& folder, const QString& prefix);
    void photographOthers(const QDir& folder, const QString& name);

private:
    /// Waits until nothing changes any more, then writes a picture.
    void photograph(const QDir& folder, const QString& name);
    void reload();
    void filter(const QString& kind);
    void search(const QString& query);
    void setBanner(AppModel::BannerKind kind, const QString& message);

    QTemporaryDir m_folder;
    FixedDateClock m_clock;
    double m_storeNow = 0;
    FakeUserDefaults m_defaults;
    AppSettings m_settings{m_defaults};
    FakePasteboard m_pasteboard;
    FakeImageConverter m_converter;
    FakeWorkspace m_workspace;
    FakeKeyEventPoster m_keys;
    ClipStore m_store;
    PasteService m_pasteService{m_pasteboard, m_keys, m_clock, {}};
    FakeLoginItem m_loginItem;
    FakeBundle m_bundle;
    LaunchAtLoginService m_launchAtLogin{{m_loginItem, m_bundle, m_defaults}};
    AppModel m_model;
    FakeFileInspector m_files;
    PreviewModel m_preview;
    PanelModel m_panel;
    QuickPanelView m_view;
};

} // namespace tessly::test
