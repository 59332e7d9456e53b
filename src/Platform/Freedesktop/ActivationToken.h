#pragma once

#include <QString>
#include <QVariantMap>

namespace tessly {

/// The environment variable in which a Wayland compositor's permission to take the focus is handed
/// from program to program (xdg-activation), and in which the toolkit looks for it when it shows or
/// activates a window.
inline constexpr auto activationTokenVariable = "XDG_ACTIVATION_TOKEN";

/// Keeps a token for the next window of the program that comes to the front, in place of the one
/// before; an empty one, or one that is too long to be any: that window has none. Main thread.
void keepActivationToken(const QString& token);

/// The token that this process was started with, as "platform data" of org.freedesktop.Application;
/// empty without one. Any thread.
[[nodiscard]] QVariantMap ownPlatformData();
/// The token in platform data, by its name for Wayland or its older one; empty without one.
[[nodiscard]] QString activationToken(const QVariantMap& platformData);

} // namespace tessly
