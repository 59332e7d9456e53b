#pragma once

#include "QtPrinting.h"
#include "SettingsModel.h"
#include "Tokens.h"
#include "WindowFixture.h"
#include "WindowViews.h"

#include <gmock/gmock.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QtTest/QTest>

using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class SettingsViewTest : public WindowFixture
{
protected:
    SettingsViewTest() { m_view = makeSettingsView(m_shown); }
    ~SettingsViewTest() override { m_view.reset(); }

    void showTab(int tab)
    {
        m_shown.setSelectedTab(tab);
        show();
    }
    [[nodiscard]] bool isOn(const QString& name) { return item(name).property("isOn").toBool(); }
    [[nodiscard]] QColor color(const QString& name)
    {
        return item(name).property("color").value<QColor>();
    }
    [[nodiscard]] static TokenColors colors() { return tokenColors(QGuiApplication::palette()); }
    [[nodiscard]] bool asks() { return find(u"clear-confirmation"_s) != nullptr; }
    /// Everything that Tab comes by, in order, beginning with the tab strip.
    [[nodiscard]] QStringList focusChain()
    {
        QStringList chain;
        for (int i = 0; i < 30; ++i) {
            press(Qt::Key_Tab);
            if (chain.contains(focused())) {
                break;
            }
            chain.append(focused());
        }
        return chain;
    }

    SettingsModel m_shown{{*m_model, m_pasteboard, u"1.2.3"_s}};
};

} // namespace tessly::test
