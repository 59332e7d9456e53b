#pragma once

#include "AppModelFixture.h"
#include "LogCapture.h"
#include "SQLiteConnection.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <algorithm>
#include <csignal>
#include <sys/resource.h>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using BannerKind = AppModel::BannerKind;
using Debounce = AppModel::Debounce;

class AppModelTest : public AppModelFixture
{
protected:
    /// Another application copies, and the monitor has seen it; the store has not run yet.
    void copy(const QByteArray& text)
    {
        m_pasteboard.copyText(text);
        m_clock.advance(350ms);
    }

    void reload()
    {
        m_model->reload(Debounce::no);
        run();
    }
};

} // namespace tessly::test
