import QtQuick
import Tessly.Design
import Tessly.Panel

// One entry of the history.
RoundedRectangle {
    id: row

    required property int index
    required property string clipID
    required property string preview
    required property string metadata
    required property string kindTitle
    required property string kindSymbol
    required property bool isPinned
    required property string shortcutLabel
    required property string shortcutName
    required property bool isSelected

    readonly property color primaryColor: isSelected ? Tokens.color.onAccent : Tokens.color.text

    implicitHeight: Math.max(tile.height, texts.height) + 2 * 9
    radius: Tokens.size.rowRadius
    color: isSelected ? Tokens.color.accent : "transparent"
    objectName: "row-" + index
    Accessible.role: Accessible.ListItem
    Accessible.name: kindTitle + ", " + preview
    Accessible.selectable: true
    Accessible.selected: isSelected

    RoundedRectangle {
        id: tile

        x: 11
        width: 34
        height: 34
        anchors.verticalCenter: parent.verticalCenter
        radius: Tokens.size.tileRadius
        color: row.isSelected ? Tokens.color.tileOnAccent : Tokens.color.tile

        Symbol {
            anchors.centerIn: parent
            name: row.kindSymbol
            color: row.isSelected ? Tokens.color.onAccent : Tokens.color.accentSymbol
            size: Tokens.size.rowSymbol
        }
    }

    Column {
        id: texts

        anchors.left: tile.right
        anchors.right: marks.left
        anchors.leftMargin: 11
        anchors.rightMargin: marks.width > 0 ? 11 : 0
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4

        PlainText {
            objectName: "preview"
            width: parent.width
            height: Tokens.size.rowLine
            verticalAlignment: Text.AlignVCenter
            color: row.primaryColor
            font.weight: Font.Medium
            // Whatever is piled upon a letter stays in its row.
            clip: true
            text: row.preview
        }

        PlainText {
            objectName: "metadata"
            width: parent.width
            height: Tokens.size.captionLine
            verticalAlignment: Text.AlignVCenter
            color: row.isSelected ? Tokens.color.onAccentSecondary : Tokens.color.secondaryText
            font.pixelSize: Tokens.size.caption
            clip: true
            text: row.metadata
        }
    }

    Row {
        id: marks

        anchors.right: parent.right
        anchors.rightMargin: 11
        anchors.verticalCenter: parent.verticalCenter
        spacing: 11

        Symbol {
            objectName: "pin"
            anchors.verticalCenter: parent.verticalCenter
            visible: row.isPinned
            name: "pin.fill"
            color: row.isSelected ? Tokens.color.onAccent : Tokens.color.pin
            size: Tokens.size.caption + 3
        }

        KeyCap {
            objectName: "shortcut"
            visible: row.shortcutLabel !== ""
            label: row.shortcutLabel
            textColor: row.primaryColor
            color: row.isSelected ? Tokens.color.keyCapOnAccent : Tokens.color.keyCap
            Accessible.ignored: false
            Accessible.role: Accessible.StaticText
            Accessible.name: row.shortcutName

            ToolTipArea {
                text: row.shortcutName
            }
        }
    }
}
