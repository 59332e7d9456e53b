import QtQuick
import Tessly.Design

// A label on the left, a control or a value on the right, and a line above all but the first.
Item {
    id: row

    property string label
    default property alias controls: right.data

    width: parent.width
    implicitHeight: Math.max(Tokens.size.formRow, right.height + 2 * 7)

    Divider {
        visible: row.y > 0
        x: 12
        width: parent.width - 12
    }

    ReadText {
        anchors.left: parent.left
        anchors.leftMargin: 12
        anchors.right: right.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        font.pixelSize: Tokens.size.formText
        text: row.label
    }

    Row {
        id: right

        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        spacing: 8
    }
}
