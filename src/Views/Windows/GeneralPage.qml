import QtQuick
import Tessly.Windows

FormPage {
    id: page

    required property SettingsModel settings

    FormSection {
        title: "Startup"

        ToggleRow {
            name: "launch-at-login"
            label: "Launch Tessly at login"
            isOn: page.settings.launchesAtLogin
            onToggled: page.settings.launchesAtLogin = !isOn
        }
    }

    FormSection {
        title: "Capture"

        ToggleRow {
            name: "capture-images"
            label: "Remember images"
            isOn: page.settings.captureImages
            onToggled: page.settings.captureImages = !isOn
        }

        ToggleRow {
            name: "capture-files"
            label: "Remember copied files"
            isOn: page.settings.captureFiles
            onToggled: page.settings.captureFiles = !isOn
        }

        StepperRow {
            name: "max-history"
            label: page.settings.maxHistoryLabel
            value: page.settings.maxHistory
            minimumValue: page.settings.minHistory
            maximumValue: page.settings.topHistory
            stepSize: page.settings.historyStep
            onChangeWanted: value => page.settings.maxHistory = value
        }

        StepperRow {
            name: "max-item-size"
            label: page.settings.maxItemSizeLabel
            value: page.settings.maxItemSizeMB
            minimumValue: page.settings.minItemSizeMB
            maximumValue: page.settings.topItemSizeMB
            onChangeWanted: value => page.settings.maxItemSizeMB = value
        }
    }

    FormSection {
        title: "Behavior"

        ToggleRow {
            name: "move-used-items"
            label: "Move pasted items to the top"
            isOn: page.settings.moveUsedItemsToTop
            onToggled: page.settings.moveUsedItemsToTop = !isOn
        }

        ToggleRow {
            name: "direct-paste-shortcuts"
            label: "Enable direct position shortcuts"
            isOn: page.settings.directPasteShortcuts
            onToggled: page.settings.directPasteShortcuts = !isOn
        }
    }
}
