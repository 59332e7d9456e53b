#pragma once

#include "LoginItem.h"

#include <QString>

namespace tessly {

/// A desktop entry in the user's autostart folder, com.brackmoor.tessly.desktop.
///
/// Desktops switch such an entry off in two ways: by "Hidden=true", as the desktop standards have
/// it, or by "X-GNOME-Autostart-enabled=false".
class AutostartLoginItem final : public LoginItem
{
public:
    /// The entry in $XDG_CONFIG_HOME/autostart, which starts `executable`.
    explicit AutostartLoginItem(QString executable);
    /// The entry in another folder, which need not exist.
    AutostartLoginItem(QString executable, const QString& folder);
    ~AutostartLoginItem() override;

    [[nodiscard]] Status status() const override;
    void registerItem() override;
    void unregisterItem() override;

private:
    QString m_executable;
    QString m_path;
};

} // namespace tessly
