import QtQuick
import Tessly.Design
import Tessly.Windows

// What some keys do: a word, and their caps.
FormRow {
    id: row

    required property shortcutSettingRow modelData

    objectName: "shortcut-" + modelData.title
    label: modelData.title

    Row {
        spacing: 4

        Repeater {
            model: row.modelData.keys

            KeyCap {
                required property string modelData

                label: modelData
                minimumWidth: 24
                padding: 6
                implicitHeight: 22
                Accessible.ignored: false
                Accessible.role: Accessible.StaticText
                Accessible.name: row.modelData.keyNames

                ToolTipArea {
                    text: row.modelData.keyNames
                }
            }
        }
    }
}
