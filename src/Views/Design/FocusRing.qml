import QtQuick
import QtQuick.Window
import Tessly.Design

// Shows which control has the keyboard, to those who use it.
RoundedRectangle {
    required property Item control
    property int gap: 2

    readonly property bool isWanted: control.Window.window?.showsFocus ?? false

    objectName: "focus-ring"
    anchors.fill: parent
    anchors.margins: -gap
    z: 1
    visible: control.activeFocus && isWanted
    color: "transparent"
    border.width: 2
    border.color: Tokens.color.focus
    Accessible.ignored: true
}
