import QtQuick
import Tessly.Design

// One command of a menu.
RoundedRectangle {
    id: item

    required property string title
    property bool isDestructive: false
    property bool isCurrent: false
    property bool isEnabled: true
    // The keys that do the same, as a key-cap label; may be empty.
    property string keys

    signal triggered
    // The pointer is on it, at this place of the window: also again and again while it rests.
    signal hovered(place: point)

    implicitWidth: label.implicitWidth + (keys === "" ? 0 : 28 + keysLabel.implicitWidth) + 2 * 10
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
        opacity: item.isEnabled ? 1 : 0.4
        color: item.isCurrent ? Tokens.color.onAccent
            : item.isDestructive ? Tokens.color.destructive : Tokens.color.text
        font.pixelSize: Tokens.size.callout + 1
        text: item.title
    }

    PlainText {
        id: keysLabel

        anchors.right: parent.right
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        visible: item.keys !== ""
        color: item.isCurrent ? Tokens.color.onAccentSecondary : Tokens.color.secondaryText
        font.pixelSize: Tokens.size.callout + 1
        text: Tokens.keys(item.keys)
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onEntered: item.hovered(mapToItem(null, mouseX, mouseY))
        onPositionChanged: event => item.hovered(mapToItem(null, event.x, event.y))
        onClicked: item.triggered()
    }
}
