import QtQuick
import QtQuick.Window
import Tessly.Design

// The tool tip of the icon in the tray.
Rectangle {
    id: root

    required property string text

    implicitWidth: Math.ceil(label.implicitWidth) + 16
    implicitHeight: Math.ceil(label.implicitHeight) + 8
    radius: Tokens.size.keyCapRadius
    color: Tokens.color.popup
    border.width: 1 / Screen.devicePixelRatio
    border.color: Tokens.color.border
    Accessible.role: Accessible.ToolTip
    Accessible.name: text

    PlainText {
        id: label

        objectName: "status-tool-tip"
        anchors.centerIn: parent
        font.pixelSize: Tokens.size.callout
        text: root.text
    }
}
