#include "ActivationToken.h"

#include <QtGlobal>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

// Of the Desktop Entry Specification's D-Bus activation.
const QString tokenKey = u"activation-token"_s;
const QString startupIDKey = u"desktop-startup-id"_s;

// Compositors' tokens have some dozens of characters. A request of several thousand bytes would end
// the connection to the compositor, and the program with it.
constexpr qsizetype longestToken = 500;

} // namespace

void keepActivationToken(const QString& token)
{
    if (token.isEmpty() || token.size() > longestToken) {
        qunsetenv(activationTokenVariable);
    } else {
        qputenv(activationTokenVariable, token.toUtf8());
    }
}

QVariantMap ownPlatformData()
{
    const QString token = qEnvironmentVariable(activationTokenVariable);
    return token.isEmpty() ? QVariantMap() : QVariantMap{{tokenKey, token}};
}

QString activationToken(const QVariantMap& platformData)
{
    const QString token = platformData.value(tokenKey).toString();
    return token.isEmpty() ? platformData.value(startupIDKey).toString() : token;
}

} // namespace tessly
