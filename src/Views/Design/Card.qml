import QtQuick
import QtQuick.Window
import Tessly.Design

// What a window without a frame shows: told from what is below by a shadow where the window has room
// for it, else by a line.
Rectangle {
    id: card

    readonly property bool hasShadow: Window.window?.hasShadow ?? false

    radius: Tokens.size.panelRadius
    color: Tokens.color.panel
    border.width: 1 / Screen.devicePixelRatio
    border.color: hasShadow ? Tokens.color.shadowedBorder : Tokens.color.border

    CardShadow {
        objectName: "card-shadow"
        anchors.fill: parent
        z: -1
        visible: card.hasShadow
        color: Tokens.color.cardShadow
        radius: card.radius
        reach: Tokens.size.cardShadowReach
        drop: Tokens.size.cardShadowDrop
    }
}
