import QtQuick
import Tessly.Design

// A label on the left, a control or a value on the right, and a line above all but the first.
Item {
    id: row

    property string label
    default property alias controls: right.data

    width: parent.width
    implicitHeight: Math.max(Tokens.size.formRow, right.height + 2 * 7)

    RowDivider {
        visible: row.y > 0
    }

    ReadText {
        anchors.left: parent.left
        anchors.leftMargin: Tokens.size.formInset
        anchors.right: right.left
        anchors.rightMargin: Tokens.size.formInset
        anchors.verticalCenter: parent.verticalCenter
        font.pixelSize: Tokens.size.formText
        text: row.label
    }

    Row {
        id: right

        anchors.right: parent.right
        anchors.rightMargin: Tokens.size.formInset
        anchors.verticalCenter: parent.verticalCenter
        spacing: 8
    }
}
