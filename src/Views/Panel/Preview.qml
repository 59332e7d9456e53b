import QtQuick
import Tessly.Design
import Tessly.Panel

// What the selected entry holds, beside the panel.
Card {
    id: root

    required property PreviewModel preview

    objectName: "preview-card"
    Accessible.role: Accessible.Pane
    Accessible.name: "Preview"
    Accessible.description: preview.facts === "" ? preview.title : preview.title + ", " + preview.facts

    Column {
        id: header

        x: Tokens.size.previewPadding
        width: parent.width - 2 * x
        height: Tokens.size.previewHeader - 1
        topPadding: 13
        spacing: 3

        ReadText {
            objectName: "preview-title"
            width: parent.width
            font.pixelSize: Tokens.size.headline
            font.weight: Font.DemiBold
            text: root.preview.title
        }

        ReadText {
            objectName: "preview-facts"
            width: parent.width
            color: Tokens.color.secondaryText
            font.pixelSize: Tokens.size.callout
            text: root.preview.facts
        }
    }

    Divider {
        id: divider

        anchors.top: header.bottom
        width: parent.width
    }

    Item {
        id: body

        anchors.top: divider.bottom
        anchors.bottom: note.visible ? note.top : parent.bottom
        width: parent.width

        PreviewPicture {
            readonly property real room: body.width - 2 * Tokens.size.previewPadding
            readonly property real shrink: Math.min(
                1, room / implicitWidth, (body.height - 2 * Tokens.size.previewPadding) / implicitHeight)

            objectName: "preview-picture"
            anchors.centerIn: parent
            visible: root.preview.hasPicture
            width: implicitWidth * shrink
            height: implicitHeight * shrink
            preview: root.preview
            Accessible.role: Accessible.Graphic
            Accessible.name: root.preview.title + ", " + root.preview.facts
        }

        Flickable {
            id: textArea

            objectName: "preview-text-area"
            anchors.fill: parent
            visible: root.preview.text !== ""
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            contentWidth: label.x + label.width + Tokens.size.previewPadding
            contentHeight: label.height + 2 * Tokens.size.previewPadding

            Text {
                id: label

                objectName: "preview-text"
                x: Tokens.size.previewPadding
                y: Tokens.size.previewPadding
                // Columns are as wide as they are.
                width: root.preview.hasColumns ? undefined : textArea.width - 2 * x
                color: Tokens.color.text
                font.pixelSize: root.preview.isMonospaced ? Tokens.size.callout : Tokens.size.previewText
                font.family: root.preview.isMonospaced ? Tokens.fixedFamily : Qt.application.font.family
                textFormat: Text.PlainText
                wrapMode: root.preview.hasColumns ? Text.NoWrap : Text.Wrap
                text: root.preview.text
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            ScrollThumb {
                list: textArea
            }
        }

        ListView {
            id: fileList

            objectName: "preview-files"
            anchors.fill: parent
            visible: root.preview.files.length > 0
            clip: true
            spacing: 10
            topMargin: Tokens.size.previewPadding
            bottomMargin: Tokens.size.previewPadding
            boundsBehavior: Flickable.StopAtBounds
            keyNavigationEnabled: false
            // Rows stay when more becomes known of their files.
            model: root.preview.files.length
            Accessible.role: Accessible.List
            Accessible.name: "Files"

            delegate: PreviewFileRow {
                width: fileList.width
                file: root.preview.files[index] ?? null
            }

            ScrollThumb {
                list: fileList
            }
        }
    }

    ReadText {
        id: note

        objectName: "preview-note"
        anchors.bottom: parent.bottom
        x: Tokens.size.previewPadding
        width: parent.width - 2 * x
        visible: text !== ""
        topPadding: 8
        bottomPadding: 12
        color: Tokens.color.secondaryText
        font.pixelSize: Tokens.size.callout
        wrapMode: Text.Wrap
        maximumLineCount: 4
        text: root.preview.note
    }

    function seen(): Flickable {
        return fileList.visible ? fileList : textArea;
    }

    Connections {
        target: root.preview

        function onScrolled(pages: int) {
            const area = root.seen();
            const top = area.originY - area.topMargin;
            const bottom = area.originY + area.contentHeight + area.bottomMargin - area.height;
            const wanted = area.contentY + pages * (area.height - 40);
            area.contentY = Math.max(top, Math.min(wanted, bottom));
        }

        function onEntryChanged() {
            textArea.contentX = 0;
            textArea.contentY = 0;
            fileList.positionViewAtBeginning();
        }
    }
}
