#include "AppModelFixture.h"

#include <sqlite3.h>

using namespace std::chrono_literals;

namespace tessly::test {

AppModelFixture::AppModelFixture()
    : m_pasteService(m_pasteboard, m_keys, m_clock, {.openSettingsURL = [this](const QUrl& url) {
                         m_openedURLs.push_back(url);
                         return m_opensURLs;
                     }})
{
    auto executor = std::make_unique<ManualExecutor>();
    m_executor = executor.get();
    m_store = std::make_unique<ClipStore>(
        m_databasePath, [this] { return m_clock.now(); }, std::move(executor));
    // It opens.
    m_executor->runOne();
    m_model = std::make_unique<AppModel>(AppModel::Dependencies{
        *m_store, m_settings, m_pasteService, m_launchAtLogin, m_pasteboard, m_converter,
        m_workspace, m_clock});
}

AppModelFixture::~AppModelFixture()
{
    m_model.reset();
    run();
    m_store.reset();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void AppModelFixture::run()
{
    do {
        settle();
    } while (m_executor->runOne());
}

void AppModelFixture::pass(Clock::Duration duration)
{
    m_clock.advance(duration);
    run();
}

Clip AppModelFixture::save(const ClipPayload& payload)
{
    m_clock.advance(1s);
    return result(m_store->save(payload, {}, {}, 10'000));
}

std::vector<Clip> AppModelFixture::stored()
{
    return result(m_store->search({}, std::nullopt, -1));
}

void AppModelFixture::executeSQL(const char* sql)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(m_databasePath.toUtf8().constData(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
}

std::vector<QByteArray> AppModelFixture::texts() const
{
    std::vector<QByteArray> texts;
    for (const Clip& clip : m_model->clips()) {
        const ClipPayload* const payload = clip.payload.held();
        texts.push_back(payload ? payload->plainText().value_or("(no text)") : "(not held)");
    }
    return texts;
}

QString AppModelFixture::message() const
{
    return m_model->banner() ? m_model->banner()->message : QString();
}

std::optional<AppModel::BannerKind> AppModelFixture::bannerKind() const
{
    return m_model->banner() ? std::optional(m_model->banner()->kind) : std::nullopt;
}

} // namespace tessly::test
