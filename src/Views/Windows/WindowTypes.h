#pragma once

#include "OnboardingModel.h"
#include "SettingsModel.h"

#include <qqml.h>

// The types of the floor below under their names in QML. That floor knows nothing of QML.
namespace tessly::qml {

struct SettingsModelType
{
    Q_GADGET
    QML_FOREIGN(tessly::SettingsModel)
    QML_NAMED_ELEMENT(SettingsModel)
    QML_UNCREATABLE("Made by the program.")
};

struct SettingsTabType
{
    Q_GADGET
    QML_FOREIGN(tessly::SettingsTab)
    QML_VALUE_TYPE(settingsTab)
};

struct ShortcutSettingRowType
{
    Q_GADGET
    QML_FOREIGN(tessly::ShortcutSettingRow)
    QML_VALUE_TYPE(shortcutSettingRow)
};

struct ShortcutSectionType
{
    Q_GADGET
    QML_FOREIGN(tessly::ShortcutSection)
    QML_VALUE_TYPE(shortcutSection)
};

struct OnboardingModelType
{
    Q_GADGET
    QML_FOREIGN(tessly::OnboardingModel)
    QML_NAMED_ELEMENT(OnboardingModel)
    QML_UNCREATABLE("Made by the program.")
};

struct PermissionRowType
{
    Q_GADGET
    QML_FOREIGN(tessly::PermissionRow)
    QML_VALUE_TYPE(permissionRow)
};

} // namespace tessly::qml
