import QtQuick
import Tessly.Design
import Tessly.Windows

FormPage {
    id: page

    required property SettingsModel settings

    Repeater {
        model: page.settings.shortcutSections

        FormSection {
            id: section

            required property shortcutSection modelData

            title: modelData.title

            Repeater {
                model: section.modelData.rows

                ShortcutSettingRow {}
            }
        }
    }

    ReadText {
        objectName: "keyboard-line"
        width: parent.width - 2 * 20
        leftPadding: 10
        color: Tokens.color.secondaryText
        font.pixelSize: Tokens.size.callout
        text: page.settings.keyboardLine
    }
}
