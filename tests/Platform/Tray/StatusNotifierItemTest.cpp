#include "StatusNotifierItem.h"

#include "ActivationToken.h"
#include "LogCapture.h"
#include "StatusIcon.h"
#include "StatusNotifierItemAdaptor.h"
#include "TestBus.h"
#include "TestSupport.h"
#include "TrayHost.h"

#include <QDBusArgument>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

namespace {

/// A variable of the environment that has another value for a while.
class ChangedVariable
{
public:
    ChangedVariable(const char* name, const QString& value)
        : m_name(name)
        , m_before(qgetenv(name))
    {
        qputenv(name, QFile::encodeName(value));
    }
    ~ChangedVariable()
    {
        if (m_before.isNull()) {
            qunsetenv(m_name);
        } else {
            qputenv(m_name, m_before);
        }
    }
    ChangedVariable(const ChangedVariable&) = delete;
    ChangedVariable& operator=(const ChangedVariable&) = delete;

private:
    const char* m_name;
    QByteArray m_before;
};

using Presence = StatusItem::Presence;
using Hosts = TrayHost::Hosts;
using Behaviour = TrayHost::Behaviour;

class StatusNotifierItemTest : public testing::Test
{
protected:
    void show()
    {
        m_item = std::make_unique<StatusNotifierItem>(
            [address = m_bus.address()] { return TestBus::connect(address); },
            [](const QRect& rectangle) { return rectangle.translated(1000, 0); });
        m_item->setEvents({
            .leftClicked = [this](auto icon) { m_leftClicks.push_back(icon); },
            .rightClicked = [this](auto icon) { m_rightClicks.push_back(icon); },
            .menu = [this] { return menu(); },
            .menuRequested = [this](QPoint position) { m_menuRequests.push_back(position); },
            .menuItemChosen = [this](const QString& action) { m_chosen << action; },
            .presenceChanged = [this] { m_presences.push_back(m_item->presence()); },
        });
        m_item->setVisible(true);
    }

    std::vector<StatusMenuItem> menu()
    {
        ++m_menusBuilt;
        const StatusMenuItem separator = {.title = {}, .action = {}, .isSeparator = true};
        return {
            {.title = u"Open Quick Paste"_s, .action = u"openQuickPaste"_s},
            {.title = m_isPaused ? u"Resume Clipboard Recording"_s : u"Pause Clipboard Recording"_s,
             .action = u"toggleMonitoring"_s},
            separator,
            {.title = u"Clear Unpinned History"_s, .action = u"clearHistory"_s},
            {.title = u"Settings…"_s, .action = u"openSettings"_s, .keyText = u","_s},
            separator,
            {.title = u"Quit Tessly"_s, .action = u"quitApplication"_s, .keyText = u"q"_s},
        };
    }

    void startTray(Behaviour behaviour = Behaviour::ordinary, Hosts hosts = Hosts::one)
    {
        m_tray = std::make_unique<TrayHost>(m_bus, behaviour, hosts);
    }

    void showInTray()
    {
        startTray();
        show();
        ASSERT_TRUE(becomes(Presence::present));
    }

    bool becomes(Presence presence)
    {
        return waitUntil([&] { return m_item->presence() == presence; });
    }

    static QStringList labels(const StatusMenuTree& tree)
    {
        QStringList labels;
        for (const StatusMenuTree& line : tree.children) {
            labels << line.properties.value(u"label"_s, u"-"_s).toString();
        }
        return labels;
    }

    TestBus m_bus;
    std::unique_ptr<TrayHost> m_tray;
    std::unique_ptr<StatusNotifierItem> m_item;
    std::vector<StatusItem::Rectangle> m_leftClicks;
    std::vector<StatusItem::Rectangle> m_rightClicks;
    std::vector<QPoint> m_menuRequests;
    QStringList m_chosen;
    std::vector<Presence> m_presences;
    bool m_isPaused = false;
    int m_menusBuilt = 0;
};

// Coming and going

TEST_F(StatusNotifierItemTest, ItAppearsInTheTray)
{
    startTray();
    show();
    EXPECT_EQ(m_item->presence(), Presence::undecided);
    ASSERT_TRUE(becomes(Presence::present));
    EXPECT_THAT(m_tray->items(), SizeIs(1));
    EXPECT_THAT(m_presences, ElementsAre(Presence::undecided, Presence::present));
}

TEST_F(StatusNotifierItemTest, WithoutATrayItIsAbsent)
{
    show();
    EXPECT_TRUE(becomes(Presence::absent));
}

TEST_F(StatusNotifierItemTest, ATrayThatStartsLaterIsJoined)
{
    show();
    ASSERT_TRUE(becomes(Presence::absent));
    startTray();
    ASSERT_TRUE(becomes(Presence::present));
    EXPECT_THAT(m_tray->items(), SizeIs(1));
}

TEST_F(StatusNotifierItemTest, ATrayThatRestartsIsJoinedAgain)
{
    showInTray();
    for (int restart = 0; restart < 2; ++restart) {
        m_tray.reset();
        ASSERT_TRUE(becomes(Presence::absent));
        startTray();
        ASSERT_TRUE(becomes(Presence::present));
        EXPECT_THAT(m_tray->items(), SizeIs(1));
    }
}

TEST_F(StatusNotifierItemTest, AWatcherWithoutAHostDoesNotShowIt)
{
    startTray(Behaviour::ordinary, Hosts::none);
    show();
    ASSERT_TRUE(becomes(Presence::absent));
    EXPECT_THAT(m_tray->items(), SizeIs(1));
    m_tray->setHosts(Hosts::one);
    EXPECT_TRUE(becomes(Presence::present));
    m_tray->setHosts(Hosts::none);
    EXPECT_TRUE(becomes(Presence::absent));
}

TEST_F(StatusNotifierItemTest, ATrayThatRefusesItIsNone)
{
    const LogCapture log;
    startTray(Behaviour::refusesItems);
    show();
    ASSERT_TRUE(becomes(Presence::absent));
    EXPECT_THAT(
        log.lines(u"com.brackmoor.tessly.StatusNotifierItem"_s),
        ElementsAre(LogCapture::Line{
            QtWarningMsg, u"com.brackmoor.tessly.StatusNotifierItem"_s,
            u"The tray refused the icon: No."_s}));
}

TEST_F(StatusNotifierItemTest, ATrayThatNeverAnswersHoldsNobodyUp)
{
    startTray(Behaviour::neverAnswers);
    show();
    ASSERT_TRUE(waitUntil([this] { return !m_tray->items().isEmpty(); }));
    EXPECT_EQ(m_item->presence(), Presence::undecided);
    m_tray.reset();
    EXPECT_TRUE(becomes(Presence::absent));
}

TEST_F(StatusNotifierItemTest, WhenTheBusGoesAwayItIsAbsent)
{
    showInTray();
    m_bus.kill();
    EXPECT_TRUE(becomes(Presence::absent));
}

TEST_F(StatusNotifierItemTest, WithoutABusItIsAbsent)
{
    m_bus.kill();
    show();
    EXPECT_TRUE(becomes(Presence::absent));
}

TEST_F(StatusNotifierItemTest, ABusThatHangsHoldsNobodyUp)
{
    startTray();
    // If anything here waited for the bus it would wait for ever: nobody else resumes it.
    m_bus.suspend();
    show();
    EXPECT_EQ(m_item->presence(), Presence::undecided);
    m_bus.resume();
    ASSERT_TRUE(becomes(Presence::present));
    m_bus.suspend();
    m_item->setVisible(false);
    m_bus.resume();
    EXPECT_EQ(m_item->presence(), Presence::absent);
}

TEST_F(StatusNotifierItemTest, ABusThatHangsWhenATrayAppearsHoldsNobodyUp)
{
    show();
    ASSERT_TRUE(becomes(Presence::absent));
    startTray();
    // The bus has told of the tray; whatever is asked of it now stays unanswered.
    m_bus.suspend();
    bool isAlive = false;
    QTimer::singleShot(50, [&] { isAlive = true; });
    ASSERT_TRUE(waitUntil([&] { return isAlive; }, std::chrono::seconds(5)));
    m_bus.resume();
    EXPECT_TRUE(becomes(Presence::present));
}

TEST_F(StatusNotifierItemTest, ItMayEndWhileTheBusIsStillBeingReached)
{
    m_bus.suspend();
    show();
    m_item.reset();
    m_bus.resume();
    EXPECT_THAT(m_presences, IsEmpty());
}

TEST_F(StatusNotifierItemTest, HiddenItIsPassive)
{
    showInTray();
    EXPECT_EQ(m_tray->properties().value(u"Status"_s), u"Active"_s);
    m_item->setVisible(false);
    EXPECT_EQ(m_item->presence(), Presence::absent);
    EXPECT_EQ(m_tray->properties().value(u"Status"_s), u"Passive"_s);
    m_item->setVisible(true);
    EXPECT_EQ(m_item->presence(), Presence::present);
    EXPECT_EQ(m_tray->properties().value(u"Status"_s), u"Active"_s);
}

// What it tells of itself

TEST_F(StatusNotifierItemTest, ItDescribesItself)
{
    showInTray();
    const auto properties = m_tray->properties();
    EXPECT_EQ(properties.value(u"Category"_s), u"ApplicationStatus"_s);
    EXPECT_EQ(properties.value(u"Id"_s), u"com.brackmoor.tessly"_s);
    EXPECT_EQ(properties.value(u"Title"_s), u"Tessly"_s);
    EXPECT_EQ(properties.value(u"ItemIsMenu"_s), false);
    EXPECT_EQ(m_tray->menuPath(), u"/MenuBar"_s);
    const auto toolTip = qdbus_cast<StatusToolTip>(properties.value(u"ToolTip"_s));
    EXPECT_EQ(toolTip.title, u"Tessly — Open Quick Paste"_s);
    EXPECT_EQ(toolTip.text, QString());
}

TEST_F(StatusNotifierItemTest, ItsPictureComesInTheUsualSizesAsAlphaRedGreenBlue)
{
    showInTray();
    const auto pixmaps =
        qdbus_cast<QList<StatusPixmap>>(m_tray->properties().value(u"IconPixmap"_s));
    QList<int> sizes;
    for (const StatusPixmap& pixmap : pixmaps) {
        EXPECT_EQ(pixmap.width, pixmap.height);
        ASSERT_EQ(pixmap.pixels.size(), pixmap.width * pixmap.height * 4);
        sizes << pixmap.width;
    }
    EXPECT_THAT(sizes, ElementsAre(16, 22, 24, 32, 48, 64));
    // The lower left of the board, and the corner beside it.
    const auto pixel = [&](int x, int y) { return pixmaps[0].pixels.sliced((y * 16 + x) * 4, 4); };
    EXPECT_EQ(pixel(3, 13), "\xff\x3d\x7f\xf5");
    EXPECT_EQ(pixel(0, 15), QByteArray(4, '\0'));
    for (int at = 0; at < 16 * 16; ++at) {
        const QByteArray drawn = pixel(at % 16, at / 16);
        const auto alpha = static_cast<std::uint8_t>(drawn[0]);
        EXPECT_LE(static_cast<std::uint8_t>(drawn[3]), alpha) << "multiplied by the opacity";
    }
}

TEST_F(StatusNotifierItemTest, TheIconIsNamedOnlyWhereItIsInstalled)
{
    const QTemporaryDir data;
    const QTemporaryDir system;
    // The program may be installed on this machine.
    const ChangedVariable home("XDG_DATA_HOME", data.path());
    const ChangedVariable folders("XDG_DATA_DIRS", system.path());
    showInTray();
    EXPECT_EQ(m_tray->properties().value(u"IconName"_s), QString());
    const QString folder = u"icons/hicolor/scalable/apps"_s;
    ASSERT_TRUE(QDir(data.path()).mkpath(folder));
    QFile file(data.filePath(folder + u"/com.brackmoor.tessly.svg"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(m_tray->properties().value(u"IconName"_s), u"com.brackmoor.tessly"_s);
}

// Clicks

TEST_F(StatusNotifierItemTest, AnActivationIsALeftClickAtItsPlace)
{
    showInTray();
    EXPECT_EQ(m_item->rectangle(), std::nullopt);
    m_tray->call(u"Activate"_s, {200, 10});
    ASSERT_TRUE(waitUntil([this] { return !m_leftClicks.empty(); }));
    // In the pixels that the test's screen has.
    EXPECT_THAT(m_leftClicks, ElementsAre(QRect(1200, 10, 1, 1)));
    EXPECT_EQ(m_item->rectangle(), QRect(1200, 10, 1, 1));
    EXPECT_THAT(m_rightClicks, IsEmpty());
}

TEST_F(StatusNotifierItemTest, ASecondaryActivationIsOneToo)
{
    showInTray();
    m_tray->call(u"SecondaryActivate"_s, {200, 10});
    EXPECT_TRUE(waitUntil([this] { return !m_leftClicks.empty(); }));
}

TEST_F(StatusNotifierItemTest, ThePermissionToTakeTheFocusIsKeptForTheWindow)
{
    showInTray();
    m_tray->call(u"ProvideXdgActivationToken"_s, {u"a token"_s});
    m_tray->call(u"Activate"_s, {200, 10});
    ASSERT_TRUE(waitUntil([this] { return !m_leftClicks.empty(); }));
    EXPECT_EQ(qEnvironmentVariable(activationTokenVariable), u"a token"_s);
    // One that no compositor would take from the program.
    keepActivationToken(QString(5000, u'x'));
    EXPECT_FALSE(qEnvironmentVariableIsSet(activationTokenVariable));
    keepActivationToken(u"another"_s);
    keepActivationToken({});
    EXPECT_FALSE(qEnvironmentVariableIsSet(activationTokenVariable));
}

TEST_F(StatusNotifierItemTest, APlaceThatTheTrayDoesNotKnowIsNone)
{
    showInTray();
    m_tray->call(u"Activate"_s, {0, 0});
    ASSERT_TRUE(waitUntil([this] { return !m_leftClicks.empty(); }));
    EXPECT_THAT(m_leftClicks, ElementsAre(std::nullopt));
}

TEST_F(StatusNotifierItemTest, ATrayWithoutMenusAsksTheProgramForIts)
{
    showInTray();
    m_tray->call(u"ContextMenu"_s, {200, 10});
    ASSERT_TRUE(waitUntil([this] { return !m_menuRequests.empty(); }));
    EXPECT_THAT(m_rightClicks, ElementsAre(QRect(1200, 10, 1, 1)));
    EXPECT_THAT(m_menuRequests, ElementsAre(QPoint(1200, 10)));
    EXPECT_THAT(m_leftClicks, IsEmpty());
}

TEST_F(StatusNotifierItemTest, ScrollingDoesNothing)
{
    showInTray();
    m_tray->call(u"Scroll"_s, {120, u"vertical"_s});
    EXPECT_THAT(m_leftClicks, IsEmpty());
    EXPECT_THAT(m_rightClicks, IsEmpty());
}

// The menu

TEST_F(StatusNotifierItemTest, TheMenuHasItsSevenLines)
{
    showInTray();
    const auto layout = m_tray->menuLayout();
    EXPECT_EQ(layout.id, 0);
    EXPECT_EQ(layout.properties.value(u"children-display"_s), u"submenu"_s);
    EXPECT_THAT(
        labels(layout), ElementsAre(
                            u"Open Quick Paste"_s, u"Pause Clipboard Recording"_s, u"-"_s,
                            u"Clear Unpinned History"_s, u"Settings…"_s, u"-"_s, u"Quit Tessly"_s));
    EXPECT_EQ(layout.children[2].properties.value(u"type"_s), u"separator"_s);
    EXPECT_EQ(
        qdbus_cast<QList<QStringList>>(layout.children[4].properties.value(u"shortcut"_s)),
        (QList<QStringList>{{u"Control"_s, u","_s}}));
}

TEST_F(StatusNotifierItemTest, TheMenuIsBuiltAnewAtEachOpening)
{
    showInTray();
    const auto aboutToShow = [this] {
        return m_tray->callMenu(u"AboutToShow"_s, {0}).arguments().value(0).toBool();
    };
    EXPECT_TRUE(aboutToShow());
    EXPECT_EQ(labels(m_tray->menuLayout())[1], u"Pause Clipboard Recording"_s);
    const quint32 revision = m_tray->revision();
    EXPECT_FALSE(aboutToShow());

    m_isPaused = true;
    const int built = m_menusBuilt;
    EXPECT_TRUE(aboutToShow());
    EXPECT_EQ(m_menusBuilt, built + 1);
    EXPECT_TRUE(waitUntil([&] { return m_tray->revision() > revision; }));
    EXPECT_EQ(labels(m_tray->menuLayout())[1], u"Resume Clipboard Recording"_s);
}

TEST_F(StatusNotifierItemTest, ATrayThatDoesNotTellOfOpeningsGetsTheMenuAsItIs)
{
    showInTray();
    m_tray->menuLayout();
    const quint32 revision = m_tray->revision();
    m_isPaused = true;
    EXPECT_EQ(labels(m_tray->menuLayout())[1], u"Resume Clipboard Recording"_s);
    EXPECT_GT(m_tray->revision(), revision);
}

TEST_F(StatusNotifierItemTest, OpeningTheMenuIsARightClick)
{
    showInTray();
    EXPECT_TRUE(m_tray->callMenu(u"AboutToShow"_s, {0}).arguments().value(0).toBool());
    ASSERT_TRUE(waitUntil([this] { return !m_rightClicks.empty(); }));
    EXPECT_THAT(m_menuRequests, IsEmpty());
}

TEST_F(StatusNotifierItemTest, ALineThatIsClickedIsChosenAndNothingElseIs)
{
    showInTray();
    const auto lines = m_tray->menuLayout().children;
    const auto event = [this](int id, const QString& name) {
        return m_tray->callMenu(
            u"Event"_s, {id, name, QVariant::fromValue(QDBusVariant(QString())), 0U});
    };
    event(lines[3].id, u"hovered"_s);
    event(lines[2].id, u"clicked"_s);
    event(4711, u"clicked"_s);
    event(lines[6].id, u"clicked"_s);
    ASSERT_TRUE(waitUntil([this] { return !m_chosen.isEmpty(); }));
    EXPECT_THAT(m_chosen, ElementsAre(u"quitApplication"_s));
}

TEST_F(StatusNotifierItemTest, ALineIsWhatItSaidAlsoWhenTheMenuHasChangedSince)
{
    showInTray();
    const auto line = m_tray->menuLayout().children[1];
    m_isPaused = true;
    m_tray->menuLayout();
    m_tray->callMenu(
        u"Event"_s, {line.id, u"clicked"_s, QVariant::fromValue(QDBusVariant(QString())), 0U});
    ASSERT_TRUE(waitUntil([this] { return !m_chosen.isEmpty(); }));
    EXPECT_THAT(m_chosen, ElementsAre(u"toggleMonitoring"_s));
}

TEST_F(StatusNotifierItemTest, EventsAndQuestionsComeInGroupsToo)
{
    showInTray();
    const auto lines = m_tray->menuLayout().children;
    const QList<StatusMenuEvent> events = {
        {.id = lines[0].id, .name = u"clicked"_s, .data = QDBusVariant(0), .timestamp = 0},
        {.id = 4711, .name = u"clicked"_s, .data = QDBusVariant(0), .timestamp = 0},
    };
    const auto unknown = m_tray->callMenu(u"EventGroup"_s, {QVariant::fromValue(events)});
    EXPECT_THAT(qdbus_cast<QList<int>>(unknown.arguments().value(0)), ElementsAre(4711));
    ASSERT_TRUE(waitUntil([this] { return !m_chosen.isEmpty(); }));
    EXPECT_THAT(m_chosen, ElementsAre(u"openQuickPaste"_s));

    m_isPaused = true;
    const auto shown =
        m_tray->callMenu(u"AboutToShowGroup"_s, {QVariant::fromValue(QList<int>{0, 4711})});
    EXPECT_THAT(qdbus_cast<QList<int>>(shown.arguments().value(0)), ElementsAre(0));
    EXPECT_THAT(qdbus_cast<QList<int>>(shown.arguments().value(1)), ElementsAre(4711));
}

TEST_F(StatusNotifierItemTest, PropertiesAreToldOneByOneAndInGroups)
{
    showInTray();
    const auto lines = m_tray->menuLayout().children;
    const auto one = m_tray->callMenu(u"GetProperty"_s, {lines[0].id, u"label"_s});
    EXPECT_EQ(one.arguments().value(0).value<QDBusVariant>().variant(), u"Open Quick Paste"_s);
    const auto none = m_tray->callMenu(u"GetProperty"_s, {4711, u"label"_s});
    EXPECT_EQ(none.arguments().value(0).value<QDBusVariant>().variant(), QString());

    const auto group = m_tray->callMenu(
        u"GetGroupProperties"_s,
        {QVariant::fromValue(QList<int>{lines[4].id, 4711}), QStringList{u"label"_s}});
    const auto argument = group.arguments().value(0).value<QDBusArgument>();
    argument.beginArray();
    ASSERT_FALSE(argument.atEnd());
    int id = 0;
    QVariantMap properties;
    argument.beginStructure();
    argument >> id >> properties;
    argument.endStructure();
    EXPECT_TRUE(argument.atEnd());
    EXPECT_EQ(id, lines[4].id);
    EXPECT_EQ(properties, (QVariantMap{{u"label"_s, u"Settings…"_s}}));
}

TEST_F(StatusNotifierItemTest, ALayoutHasOnlyTheDepthAndThePropertiesThatWereAskedFor)
{
    showInTray();
    EXPECT_THAT(m_tray->menuLayout(0, 0).children, IsEmpty());
    const auto layout = m_tray->menuLayout(0, 1, {u"label"_s});
    EXPECT_EQ(layout.children[6].properties, (QVariantMap{{u"label"_s, u"Quit Tessly"_s}}));
    const auto line = m_tray->menuLayout(layout.children[6].id);
    EXPECT_EQ(line.id, layout.children[6].id);
    EXPECT_THAT(line.children, IsEmpty());
    EXPECT_THAT(m_tray->menuLayout(4711).children, IsEmpty());
}

} // namespace

} // namespace tessly::test
