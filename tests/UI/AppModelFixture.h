#pragma once

#include "AppModel.h"
#include "FakeBundle.h"
#include "FakeImageConverter.h"
#include "FakeKeyEventPoster.h"
#include "FakeLoginItem.h"
#include "FakePasteboard.h"
#include "FakeUserDefaults.h"
#include "FakeWorkspace.h"
#include "ManualExecutor.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace tessly::test {

/// A model over a real store, whose worker runs when the test says so, in virtual time, on a
/// desktop of fakes.
class AppModelFixture : public testing::Test
{
protected:
    AppModelFixture();
    ~AppModelFixture() override;

    /// Runs everything that waits: the store's operations and the event loop. No time passes.
    void run();
    /// Lets the event loop deliver what is ready, and the store wait.
    void settle() { m_clock.advance(Clock::Duration::zero()); }
    /// Time passes, and everything that falls due runs.
    void pass(Clock::Duration duration);

    /// The result of a store operation that the test itself calls.
    template <typename Result>
    Result result(QCoro::Task<Result> operation)
    {
        run();
        return await(std::move(operation));
    }

    /// Puts a content into the store behind the model's back, a second later than the one before.
    Clip save(const ClipPayload& payload);
    Clip save(const QByteArray& text) { return save(ClipPayload({.plainText = text})); }
    /// Everything in the store, in list order.
    std::vector<Clip> stored();
    /// Runs SQL on a connection of the test's own, as another program might.
    void executeSQL(const char* sql);
    /// From now on every store operation fails.
    void breakStore() { executeSQL("DROP TABLE clips"); }

    [[nodiscard]] std::vector<QByteArray> texts() const;
    /// The banner's text, empty if there is none.
    [[nodiscard]] QString message() const;
    [[nodiscard]] std::optional<AppModel::BannerKind> bannerKind() const;

    QTemporaryDir m_folder;
    QString m_databasePath = m_folder.filePath(QStringLiteral("history.sqlite"));
    VirtualClock m_clock;
    FakeUserDefaults m_defaults;
    AppSettings m_settings{m_defaults};
    FakePasteboard m_pasteboard;
    FakeImageConverter m_converter;
    FakeWorkspace m_workspace;
    /// Every address that was to be opened, and whether the desktop does it.
    std::vector<QUrl> m_openedURLs;
    bool m_opensURLs = true;
    FakeKeyEventPoster m_keys;
    FakeLoginItem m_loginItem;
    FakeBundle m_bundle;
    LaunchAtLoginService m_launchAtLogin{{m_loginItem, m_bundle, m_defaults}};
    /// The store's.
    ManualExecutor* m_executor = nullptr;
    std::unique_ptr<ClipStore> m_store;
    PasteService m_pasteService;
    std::unique_ptr<AppModel> m_model;
};

} // namespace tessly::test
