#include "AppSettings.h"

#include <QLoggingCategory>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcAppSettings, "com.brackmoor.tessly.AppSettings")

const QString maxHistoryKey = u"maxHistory"_s;
const QString captureImagesKey = u"captureImages"_s;
const QString captureFilesKey = u"captureFiles"_s;
const QString maxItemSizeMBKey = u"maxItemSizeMB"_s;
const QString ignoredBundleIDsKey = u"ignoredBundleIDs"_s;
const QString directPasteShortcutsKey = u"directPasteShortcuts"_s;
const QString moveUsedItemsToTopKey = u"moveUsedItemsToTop"_s;
const QString hasCompletedOnboardingKey = u"hasCompletedOnboarding"_s;

QVariantMap registeredDefaults()
{
    // Password managers and the keychain tool.
    const QStringList ignored = {
        u"com.apple.Passwords"_s,        u"com.apple.keychainaccess"_s,
        u"com.agilebits.onepassword7"_s, u"com.1password.1password"_s,
        u"com.bitwarden.desktop"_s,      u"org.keepassxc.keepassxc"_s,
    };
    return {
        {maxHistoryKey, QVariant::fromValue<qint64>(500)},
        {captureImagesKey, true},
        {captureFilesKey, true},
        {maxItemSizeMBKey, QVariant::fromValue<qint64>(25)},
        {ignoredBundleIDsKey, ignored.join(u'\n')},
        {directPasteShortcutsKey, true},
        {moveUsedItemsToTopKey, false},
        {hasCompletedOnboardingKey, false},
    };
}

bool isNewline(QChar character)
{
    return (character >= u'\n' && character <= u'\r') || character == u'\u0085' ||
           character == u'\u2028' || character == u'\u2029';
}

} // namespace

AppSettings::AppSettings(UserDefaults& defaults, QObject* parent)
    : QObject(parent)
    , m_defaults(defaults)
{
    m_defaults.registerDefaults(registeredDefaults());
    m_maxHistory = std::clamp<qint64>(m_defaults.integer(maxHistoryKey), 10, 10'000);
    if (!m_defaults.couldBeRead()) {
        m_isMaxHistoryKnown = false;
    } else if (const std::optional<QString> stored = m_defaults.string(maxHistoryKey)) {
        stored->toLongLong(&m_isMaxHistoryKnown);
    }
    if (!m_isMaxHistoryKnown) {
        qCWarning(
            lcAppSettings, "%s: nothing is trimmed until it is set in the settings.",
            m_defaults.couldBeRead() ? "The stored maxHistory is no number"
                                     : "The stored maxHistory could not be read");
    }
    m_captureImages = m_defaults.boolean(captureImagesKey);
    m_captureFiles = m_defaults.boolean(captureFilesKey);
    m_maxItemSizeMB = std::clamp<qint64>(m_defaults.integer(maxItemSizeMBKey), 1, 250);
    m_ignoredBundleIDsText = m_defaults.string(ignoredBundleIDsKey).value_or(QString());
    m_directPasteShortcuts = m_defaults.boolean(directPasteShortcutsKey);
    m_moveUsedItemsToTop = m_defaults.boolean(moveUsedItemsToTopKey);
    m_hasCompletedOnboarding = m_defaults.boolean(hasCompletedOnboardingKey);
}

qint64 AppSettings::trimLimit() const
{
    return m_isMaxHistoryKnown ? m_maxHistory : std::numeric_limits<qint64>::max();
}

void AppSettings::setMaxHistory(qint64 value)
{
    const bool isChange = std::exchange(m_maxHistory, value) != value;
    m_isMaxHistoryKnown = true;
    m_defaults.setInteger(maxHistoryKey, value);
    if (isChange) {
        Q_EMIT maxHistoryChanged();
    }
}

void AppSettings::setCaptureImages(bool value)
{
    const bool isChange = std::exchange(m_captureImages, value) != value;
    m_defaults.setBoolean(captureImagesKey, value);
    if (isChange) {
        Q_EMIT captureImagesChanged();
    }
}

void AppSettings::setCaptureFiles(bool value)
{
    const bool isChange = std::exchange(m_captureFiles, value) != value;
    m_defaults.setBoolean(captureFilesKey, value);
    if (isChange) {
        Q_EMIT captureFilesChanged();
    }
}

void AppSettings::setMaxItemSizeMB(qint64 value)
{
    const bool isChange = std::exchange(m_maxItemSizeMB, value) != value;
    m_defaults.setInteger(maxItemSizeMBKey, value);
    if (isChange) {
        Q_EMIT maxItemSizeMBChanged();
    }
}

void AppSettings::setIgnoredBundleIDsText(const QString& value)
{
    const bool isChange = std::exchange(m_ignoredBundleIDsText, value) != value;
    m_defaults.setString(ignoredBundleIDsKey, value);
    if (isChange) {
        Q_EMIT ignoredBundleIDsTextChanged();
    }
}

void AppSettings::setDirectPasteShortcuts(bool value)
{
    const bool isChange = std::exchange(m_directPasteShortcuts, value) != value;
    m_defaults.setBoolean(directPasteShortcutsKey, value);
    if (isChange) {
        Q_EMIT directPasteShortcutsChanged();
    }
}

void AppSettings::setMoveUsedItemsToTop(bool value)
{
    const bool isChange = std::exchange(m_moveUsedItemsToTop, value) != value;
    m_defaults.setBoolean(moveUsedItemsToTopKey, value);
    if (isChange) {
        Q_EMIT moveUsedItemsToTopChanged();
    }
}

void AppSettings::setHasCompletedOnboarding(bool value)
{
    const bool isChange = std::exchange(m_hasCompletedOnboarding, value) != value;
    m_defaults.setBoolean(hasCompletedOnboardingKey, value);
    if (isChange) {
        Q_EMIT hasCompletedOnboardingChanged();
    }
}

QSet<QString> AppSettings::ignoredBundleIDs() const
{
    QSet<QString> ids;
    const QStringView text = m_ignoredBundleIDsText;
    qsizetype begin = 0;
    for (qsizetype end = 0; end <= text.size(); ++end) {
        if (end < text.size() && !isNewline(text[end])) {
            continue;
        }
        const QString id = text.sliced(begin, end - begin).trimmed().toString().toLower();
        if (!id.isEmpty()) {
            ids.insert(id);
        }
        begin = end + 1;
    }
    return ids;
}

} // namespace tessly
