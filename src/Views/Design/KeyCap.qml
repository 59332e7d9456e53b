import QtQuick
import Tessly.Design

// A key, or several at once, as they stand on the keys.
RoundedRectangle {
    id: cap

    required property string label
    property color textColor: Tokens.color.text
    property int padding: 7
    property int minimumWidth: 42
    property alias font: text.font

    implicitWidth: Math.max(minimumWidth, text.implicitWidth + 2 * padding)
    implicitHeight: 23
    radius: Tokens.size.keyCapRadius
    color: Tokens.color.keyCap

    PlainText {
        id: text

        anchors.centerIn: parent
        color: cap.textColor
        font.pixelSize: Tokens.size.callout
        font.weight: Font.Bold
        text: Tokens.keys(cap.label)
    }
}
