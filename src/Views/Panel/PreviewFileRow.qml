import QtQuick
import Tessly.Design
import Tessly.Panel

// One file of the preview.
Item {
    id: row

    required property int index
    required property var file

    readonly property string name: file?.name ?? ""
    readonly property string folder: file?.folder ?? ""
    readonly property string status: file?.status ?? ""

    implicitHeight: texts.height
    objectName: "preview-file-" + index
    Accessible.role: Accessible.ListItem
    Accessible.name: [name, status, folder].filter(part => part !== "").join(", ")

    Column {
        id: texts

        x: Tokens.size.previewPadding
        width: parent.width - 2 * x
        spacing: 2

        PlainText {
            objectName: "file-name"
            width: parent.width
            font.pixelSize: Tokens.size.previewText
            font.weight: Font.Medium
            wrapMode: Text.WrapAnywhere
            maximumLineCount: 3
            text: row.name
        }

        PlainText {
            objectName: "file-folder"
            width: parent.width
            color: Tokens.color.secondaryText
            font.pixelSize: Tokens.size.caption
            wrapMode: Text.WrapAnywhere
            maximumLineCount: 4
            text: row.folder
        }

        PlainText {
            objectName: "file-status"
            width: parent.width
            height: Tokens.size.captionLine
            color: row.file?.isMissing ? Tokens.color.attention : Tokens.color.secondaryText
            font.pixelSize: Tokens.size.caption
            text: row.status
        }
    }
}
