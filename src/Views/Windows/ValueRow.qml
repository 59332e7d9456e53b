import QtQuick
import Tessly.Design

// Something to know, by name and value.
FormRow {
    id: row

    required property string name
    required property string value
    property color valueColor: Tokens.color.secondaryText

    ReadText {
        objectName: row.name
        anchors.verticalCenter: parent.verticalCenter
        color: row.valueColor
        font.pixelSize: Tokens.size.formText
        text: row.value
    }
}
