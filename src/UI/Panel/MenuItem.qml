import QtQuick
import Tessly.Panel

// One command of a menu.
Rectangle {
    id: item

    required property string title
    property bool isDestructive: false
    property bool isCurrent: false

    signal triggered
    signal hovered

    implicitWidth: label.implicitWidth + 2 * 10
    implicitHeight: label.implicitHeight + 2 * 5
    radius: Tokens.size.popupRadius - 4
    color: isCurrent ? Tokens.color.accent : "transparent"
    Accessible.role: Accessible.MenuItem
    Accessible.name: title
    Accessible.onPressAction: triggered()

    PlainText {
        id: label

        x: 10
        anchors.verticalCenter: parent.verticalCenter
        color: item.isCurrent ? Tokens.color.onAccent
            : item.isDestructive ? Tokens.color.destructive : Tokens.color.text
        font.pixelSize: Tokens.size.callout + 1
        text: item.title
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onPositionChanged: item.hovered()
        onClicked: item.triggered()
    }
}
