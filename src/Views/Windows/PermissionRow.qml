import QtQuick
import Tessly.Design
import Tessly.Windows

// One thing to know before the history begins.
Row {
    id: row

    required property permissionRow modelData

    objectName: "permission-" + modelData.symbol
    width: parent.width
    spacing: 14

    RoundedRectangle {
        id: tile

        width: 34
        height: 34
        radius: Tokens.size.tileRadius
        color: Tokens.color.tile

        Symbol {
            anchors.centerIn: parent
            name: row.modelData.symbol
            color: Tokens.color.accentSymbol
            size: Tokens.size.permissionSymbol
        }
    }

    Column {
        width: row.width - tile.width - row.spacing
        spacing: 4

        ReadText {
            objectName: "permission-title"
            width: parent.width
            font.pixelSize: Tokens.size.headline
            font.weight: Font.Bold
            text: row.modelData.title
        }

        ReadText {
            objectName: "permission-detail"
            width: parent.width
            color: Tokens.color.secondaryText
            font.pixelSize: Tokens.size.callout
            wrapMode: Text.Wrap
            maximumLineCount: 3
            text: row.modelData.detail
        }

        ReadText {
            objectName: "permission-note"
            width: parent.width
            visible: text !== ""
            color: Tokens.color.secondaryText
            font.pixelSize: Tokens.size.caption
            wrapMode: Text.Wrap
            maximumLineCount: 3
            text: row.modelData.note
        }
    }
}
