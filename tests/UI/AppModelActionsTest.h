#pragma once

#include "AppModelFixture.h"

#include "PasteboardItems.h"

#include <gmock/gmock.h>

#include <QSignalSpy>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using BannerKind = AppModel::BannerKind;
using PasteStyle = AppModel::PasteStyle;

/// Three texts in the history, "one" the newest and selected, and an editor in front.
class AppModelActionsTest : public AppModelFixture
{
protected:
    AppModelActionsTest()
    {
        for (const char* text : {"three", "two", "one"}) {
            save(text);
        }
        m_model->reload(AppModel::Debounce::no);
        // What the model does a while after its first reload is done: it rests.
        run();
        pass(1min);
        m_workspace.setFrontmost(m_editor);
        m_model->closePanel = [this] {
            ++m_panelCloses;
            m_writesWhenPanelClosed = m_pasteboard.writes().size();
        };
    }

    [[nodiscard]] const Clip& clip(std::size_t index) const { return m_model->clips().at(index); }
    /// The text on the pasteboard, if the program wrote it.
    [[nodiscard]] QByteArray written() const
    {
        return m_pasteboard.ownItems().empty()
                   ? QByteArray()
                   : m_pasteboard.ownItems().front().plainText.value_or(QByteArray());
    }
    void expectBanner(const QString& text, BannerKind kind) const
    {
        EXPECT_EQ(message(), text);
        EXPECT_EQ(bannerKind(), kind);
    }
    void expectStoreErrorAndNoReload() const
    {
        EXPECT_TRUE(message().startsWith(u"Clipboard database operation failed: "_s))
            << message().toStdString();
        EXPECT_EQ(bannerKind(), BannerKind::error);
        EXPECT_THAT(texts(), ElementsAre("one", "two", "three"));
    }

    std::shared_ptr<FakeRunningApplication> m_editor =
        std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s, u"Editor"_s);
    int m_panelCloses = 0;
    std::size_t m_writesWhenPanelClosed = 0;
};

} // namespace tessly::test
