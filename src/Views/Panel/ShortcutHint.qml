import QtQuick
import Tessly.Design
import Tessly.Panel

// What a key does: its caps and a word.
Item {
    id: hint

    required property panelHint modelData

    objectName: "hint-" + modelData.title
    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight
    Accessible.role: Accessible.StaticText
    Accessible.name: modelData.keyNames + ": " + modelData.title

    Row {
        id: row

        spacing: 4

        Repeater {
            model: hint.modelData.keys

            KeyCap {
                required property string modelData

                label: modelData
                padding: 4
                minimumWidth: 18
                implicitHeight: 18
                radius: Tokens.size.hintCapRadius
                color: Tokens.color.hintCap
                font.pixelSize: Tokens.size.hintCapText
                font.weight: Font.DemiBold
            }
        }

        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            color: Tokens.color.secondaryText
            font.pixelSize: Tokens.size.caption
            text: hint.modelData.title
        }
    }

    ToolTipArea {
        text: hint.modelData.keyNames
    }
}
