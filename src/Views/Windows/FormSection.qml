import QtQuick
import QtQuick.Window
import Tessly.Design

// Rows that belong together, under a heading.
Column {
    id: section

    required property string title
    default property alias rows: column.data

    width: parent.width - 2 * 20
    spacing: 6
    Accessible.role: Accessible.Grouping
    Accessible.name: title

    ReadText {
        x: Tokens.size.formInset
        width: parent.width - 2 * Tokens.size.formInset
        color: Tokens.color.secondaryText
        font.pixelSize: Tokens.size.callout
        font.weight: Font.DemiBold
        text: section.title
        Accessible.role: Accessible.Heading
    }

    RoundedRectangle {
        width: parent.width
        height: column.height
        radius: Tokens.size.groupRadius
        color: Tokens.color.group
        border.width: 1 / Screen.devicePixelRatio
        border.color: Tokens.color.divider

        Column {
            id: column

            width: parent.width
        }
    }
}
