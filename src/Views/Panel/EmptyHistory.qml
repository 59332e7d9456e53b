import QtQuick
import Tessly.Design
import Tessly.Panel

// Why there is nothing to see.
Item {
    id: empty

    required property bool isSearching

    objectName: "empty-history"
    Accessible.role: Accessible.StaticText
    Accessible.name: label.text

    Column {
        anchors.centerIn: parent
        spacing: 12

        Symbol {
            objectName: "empty-history-symbol"
            anchors.horizontalCenter: parent.horizontalCenter
            name: empty.isSearching ? "magnifyingglass" : "doc.on.clipboard"
            color: Tokens.color.secondaryText
            size: Tokens.size.emptySymbol
        }

        PlainText {
            id: label

            objectName: "empty-history-label"
            anchors.horizontalCenter: parent.horizontalCenter
            font.pixelSize: Tokens.size.emptyText
            font.weight: Font.Bold
            text: empty.isSearching ? "No matching clips" : "Clipboard is empty"
        }
    }
}
