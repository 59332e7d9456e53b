#include "AppModel.h"
#include "ClipDatabase.h"
#include "FakeBundle.h"
#include "FakeImageConverter.h"
#include "FakeKeyEventPoster.h"
#include "FakeLoginItem.h"
#include "FakePasteboard.h"
#include "FakeUserDefaults.h"
#include "FakeWorkspace.h"
#include "SystemClock.h"
#include "TestSupport.h"
#include "ThreadExecutor.h"
#include "VirtualClock.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly::test {
namespace {

/// The model over a store with its own thread, as in the program: for what only two threads show.
class AppModelThreadTest : public testing::Test
{
protected:
    QTemporaryDir m_folder;
    VirtualClock m_clock;
    FakeUserDefaults m_defaults;
    AppSettings m_settings{m_defaults};
    FakePasteboard m_pasteboard;
    FakeImageConverter m_converter;
    FakeWorkspace m_workspace;
    FakeKeyEventPoster m_keys;
    FakeLoginItem m_loginItem;
    FakeBundle m_bundle;
    LaunchAtLoginService m_launchAtLogin{{m_loginItem, m_bundle, m_defaults}};
    std::unique_ptr<ClipStore> m_store = std::make_unique<ClipStore>(
        m_folder.filePath(u"history.sqlite"_s), [] { return SystemClock().now(); },
        std::make_unique<ThreadExecutor>("store"));
    PasteService m_pasteService{m_pasteboard, m_keys, m_clock, {}};
    std::unique_ptr<AppModel> m_model = std::make_unique<AppModel>(AppModel::Dependencies{
        *m_store, m_settings, m_pasteService, m_launchAtLogin, m_pasteboard, m_converter,
        m_workspace, m_clock});
};

TEST_F(AppModelThreadTest, TheLastReloadWinsHoweverTheyOverlap)
{
    m_model->clipboardMonitor().start();
    for (int i = 0; i < 30; ++i) {
        m_pasteboard.copyText("text " + QByteArray::number(i));
        m_clock.advance(350ms);
        m_model->setQuery(QString::number(i));
        m_model->reload(AppModel::Debounce::no);
        m_model->reload(AppModel::Debounce::yes);
    }
    m_model->setQuery(u"text 2"_s);
    m_model->reload(AppModel::Debounce::no);
    EXPECT_TRUE(waitUntil([this] { return m_model->statistics().totalItems == 30; }));
    // "2" and "20" to "29".
    EXPECT_TRUE(waitUntil([this] { return m_model->clips().size() == 11; }));
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelThreadTest, ModelAndStoreMayGoWhileTheStoreWorks)
{
    m_model->clipboardMonitor().start();
    for (int i = 0; i < 10; ++i) {
        m_pasteboard.copyText("text " + QByteArray::number(i));
        m_clock.advance(350ms);
    }
    m_model->reload(AppModel::Debounce::no);
    m_model->clearHistory(false);
    m_model.reset();
    m_store.reset();
    m_clock.advance(0ms);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // It is sound, whatever had been begun.
    ClipDatabase history(
        m_folder.filePath(u"history.sqlite"_s), SQLiteConnection::Access::readOnly);
    EXPECT_TRUE(history.hasHistory());
    EXPECT_NO_THROW(ClipDatabase(m_folder.filePath(u"history.sqlite"_s), [] { return 0.0; }));
}

} // namespace
} // namespace tessly::test
