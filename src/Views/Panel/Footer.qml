import QtQuick
import Tessly.Design
import Tessly.Panel

// What the keys do, and how much there is.
Item {
    id: footer

    required property PanelModel panel

    implicitHeight: 38

    Row {
        anchors.left: parent.left
        anchors.leftMargin: Tokens.size.panelPadding
        anchors.verticalCenter: parent.verticalCenter
        spacing: 14

        Repeater {
            model: footer.panel.hints

            ShortcutHint {}
        }
    }

    ReadText {
        objectName: "item-count"
        anchors.right: parent.right
        anchors.rightMargin: Tokens.size.panelPadding
        anchors.verticalCenter: parent.verticalCenter
        color: Tokens.color.secondaryText
        font.pixelSize: Tokens.size.caption
        text: footer.panel.itemCount
    }
}
