#include "DesktopAppearance.h"

#include "TestBus.h"
#include "TestSupport.h"
#include "VirtualClock.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace tessly::test {

/// As portals tell a colour.
struct PortalColor
{
    double red = 0;
    double green = 0;
    double blue = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalColor& color)
{
    argument.beginStructure();
    argument << color.red << color.green << color.blue;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalColor& color)
{
    argument.beginStructure();
    argument >> color.red >> color.green >> color.blue;
    argument.endStructure();
    return argument;
}

} // namespace tessly::test

Q_DECLARE_METATYPE(tessly::test::PortalColor)

namespace tessly::test {

namespace {

using Scheme = DesktopAppearance::Scheme;

const QString portalName = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceNamespace = u"org.freedesktop.appearance"_s;
const QString schemeKey = u"color-scheme"_s;
const QString accentKey = u"accent-color"_s;

QVariant color(double red, double green, double blue)
{
    return QVariant::fromValue(PortalColor{red, green, blue});
}

/// A portal that has settings, on a connection of its own.
class SettingsPortal final : public QDBusVirtualObject
{
public:
    SettingsPortal(const TestBus& bus, const QVariantMap& settings)
        : m_settings(settings)
        , m_bus(bus.connect())
    {
        const bool isUp =
            m_bus.registerVirtualObject(portalPath, this) && m_bus.registerService(portalName);
        if (!isUp) {
            throw std::runtime_error("the portal cannot get onto the bus");
        }
    }

    ~SettingsPortal() override
    {
        const QString name = m_bus.name();
        m_bus.unregisterObject(portalPath);
        m_bus = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(name);
    }

    void change(const QString& space, const QString& key, const QVariant& value)
    {
        auto signal =
            QDBusMessage::createSignal(portalPath, settingsInterface, u"SettingChanged"_s);
        signal << space << key << QVariant::fromValue(QDBusVariant(value));
        m_bus.send(signal);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        if (message.member() != "ReadAll"_L1 ||
            message.arguments() != QVariantList{QStringList{appearanceNamespace}}) {
            return false;
        }
        return bus.send(message.createReply(
            QVariant::fromValue(QMap<QString, QVariantMap>{{appearanceNamespace, m_settings}})));
    }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }

private:
    QVariantMap m_settings;
    QDBusConnection m_bus;
};

class DesktopAppearanceTest : public testing::Test
{
protected:
    DesktopAppearanceTest()
    {
        qDBusRegisterMetaType<PortalColor>();
        qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
    }

    void startPortal(const QVariantMap& settings)
    {
        m_portal = std::make_unique<SettingsPortal>(m_bus, settings);
    }

    void open()
    {
        m_appearance = std::make_unique<DesktopAppearance>(
            [address = m_bus.address()] { return TestBus::connect(address); }, m_clock);
        QObject::connect(
            m_appearance.get(), &DesktopAppearance::changed, m_appearance.get(),
            [this] { ++m_changes; });
    }

    [[nodiscard]] bool becomes(Scheme scheme, std::optional<QColor> accent)
    {
        return waitUntil(
            [&] { return m_appearance->scheme() == scheme && m_appearance->accent() == accent; });
    }

    TestBus m_bus;
    VirtualClock m_clock;
    std::unique_ptr<SettingsPortal> m_portal;
    std::unique_ptr<DesktopAppearance> m_appearance;
    int m_changes = 0;
};

TEST_F(DesktopAppearanceTest, isThatOfThePortal)
{
    startPortal({{schemeKey, 1U}, {accentKey, color(1, 0, 0)}});
    open();
    ASSERT_TRUE(becomes(Scheme::dark, QColor(255, 0, 0)));
    EXPECT_EQ(m_changes, 1) << "both at once";
    const QPalette palette = m_appearance->palette();
    EXPECT_LT(
        palette.color(QPalette::Window).lightness(),
        palette.color(QPalette::WindowText).lightness());
    EXPECT_EQ(palette.color(QPalette::Highlight), QColor(255, 0, 0));
}

TEST_F(DesktopAppearanceTest, followsThePortalWhileItRuns)
{
    startPortal({{schemeKey, 1U}});
    open();
    ASSERT_TRUE(becomes(Scheme::dark, std::nullopt));
    m_portal->change(u"org.gnome.desktop.interface"_s, schemeKey, 2U);
    m_portal->change(appearanceNamespace, accentKey, color(0, 0, 1));
    ASSERT_TRUE(becomes(Scheme::dark, QColor(0, 0, 255)));
    m_portal->change(appearanceNamespace, schemeKey, 2U);
    ASSERT_TRUE(becomes(Scheme::light, QColor(0, 0, 255)));
    const QPalette palette = m_appearance->palette();
    EXPECT_GT(
        palette.color(QPalette::Window).lightness(),
        palette.color(QPalette::WindowText).lightness());
    m_portal->change(appearanceNamespace, schemeKey, 0U);
    ASSERT_TRUE(becomes(Scheme::noPreference, QColor(0, 0, 255)));
    EXPECT_EQ(m_changes, 4);
}

TEST_F(DesktopAppearanceTest, leavesThePaletteAloneWithoutAPreference)
{
    startPortal({{schemeKey, 0U}, {accentKey, color(0, 1, 0)}});
    open();
    ASSERT_TRUE(becomes(Scheme::noPreference, QColor(0, 255, 0)));
    const QPalette palette = m_appearance->palette();
    EXPECT_FALSE(palette.isBrushSet(QPalette::Active, QPalette::Window));
    EXPECT_FALSE(palette.isBrushSet(QPalette::Active, QPalette::WindowText));
}

TEST_F(DesktopAppearanceTest, whatIsNoColourIsNoAccent)
{
    startPortal({{accentKey, color(0, 0, 1)}});
    open();
    for (const QVariant& nonsense :
         {color(-1, -1, -1), color(0, 0, 1.5),
          color(std::numeric_limits<double>::quiet_NaN(), 0, 0), QVariant(u"blue"_s),
          QVariant(7U)}) {
        ASSERT_TRUE(becomes(Scheme::noPreference, QColor(0, 0, 255)));
        m_portal->change(appearanceNamespace, accentKey, nonsense);
        EXPECT_TRUE(becomes(Scheme::noPreference, std::nullopt));
        m_portal->change(appearanceNamespace, accentKey, color(0, 0, 1));
    }
}

TEST_F(DesktopAppearanceTest, whatIsNoSchemeIsNoPreference)
{
    startPortal({{schemeKey, 1U}});
    open();
    for (const QVariant& nonsense : {QVariant(3U), QVariant(u"dark"_s), QVariant(-1)}) {
        ASSERT_TRUE(becomes(Scheme::dark, std::nullopt));
        m_portal->change(appearanceNamespace, schemeKey, nonsense);
        EXPECT_TRUE(becomes(Scheme::noPreference, std::nullopt));
        m_portal->change(appearanceNamespace, schemeKey, 1U);
    }
}

TEST_F(DesktopAppearanceTest, aPortalThatComesLaterIsHeard)
{
    open();
    startPortal({{schemeKey, 1U}});
    EXPECT_TRUE(becomes(Scheme::dark, std::nullopt));
    m_portal.reset();
    startPortal({{schemeKey, 2U}});
    EXPECT_TRUE(becomes(Scheme::light, std::nullopt));
}

TEST_F(DesktopAppearanceTest, aPortalIsNotStartedForIt)
{
    QTemporaryDir folder;
    const QString started = folder.filePath(u"started"_s);
    m_bus.addService(portalName, u"/usr/bin/touch "_s + started);
    open();
    // What is heard after the question has been answered.
    startPortal({{schemeKey, 1U}});
    EXPECT_TRUE(becomes(Scheme::dark, std::nullopt));
    EXPECT_FALSE(QFileInfo::exists(started));
}

TEST_F(DesktopAppearanceTest, withoutABusThereIsNoPreference)
{
    m_bus.kill();
    open();
    EXPECT_EQ(m_appearance->scheme(), Scheme::noPreference);
    EXPECT_EQ(m_appearance->accent(), std::nullopt);
    EXPECT_EQ(m_appearance->palette(), QPalette());
}

} // namespace
} // namespace tessly::test
