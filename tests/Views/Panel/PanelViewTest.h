#pragma once

#include "PanelViewFixture.h"

#include "QtPrinting.h"
#include "Tokens.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QtTest/QTest>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class PanelViewTest : public PanelViewFixture
{
protected:
    void saveMany(int count)
    {
        for (int i = 1; i <= count; ++i) {
            save("entry " + QByteArray::number(i));
        }
    }

    [[nodiscard]] QString searchText() { return text(u"clipboard-search"_s); }
    [[nodiscard]] bool searchHasFocus() { return item(u"clipboard-search"_s).hasActiveFocus(); }
    [[nodiscard]] bool isCurrent(const QString& command)
    {
        return item(command).property("isCurrent").toBool();
    }
    [[nodiscard]] bool menuIsOpen() { return find(u"row-menu"_s) != nullptr; }
    /// What assistive technology is told of an item.
    [[nodiscard]] QString accessibleName(const QString& name)
    {
        QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(&item(name));
        return interface != nullptr ? interface->text(QAccessible::Name) : QString();
    }
    [[nodiscard]] bool isLit(const QString& name)
    {
        const QVariant lit = item(name).property("isLit");
        EXPECT_TRUE(lit.isValid());
        return lit.toBool();
    }
    [[nodiscard]] qreal scrolledTo() { return item(u"history"_s).property("contentY").toReal(); }
    /// Whether the first row is as far from the edge as the design has it.
    [[nodiscard]] bool isAtTop()
    {
        QQuickItem* const first = find(u"row-0"_s);
        return first != nullptr &&
               first->mapToItem(&item(u"history"_s), QPointF()) == QPointF(8, 8);
    }
    /// Whether a row is within what is seen of the list.
    [[nodiscard]] bool isInSight(int row)
    {
        QQuickItem* const found = find(u"row-%1"_s.arg(row));
        if (found == nullptr) {
            return false;
        }
        const QQuickItem& list = item(u"history"_s);
        const qreal top = found->mapToItem(&list, QPointF()).y();
        return top >= 0 && top + found->height() <= list.height();
    }
};

} // namespace tessly::test
