import QtQuick
import Tessly.Design

// A question, and two buttons that answer it.
Item {
    id: card

    required property string title
    required property string message
    required property string confirmTitle
    required property string cancelTitle
    property bool isDestructive: false
    // Which button Return presses at first.
    property bool confirmsByDefault: false

    signal confirmed
    signal cancelled

    // Takes its height from texts that have just been set.
    function settle() {
        content.forceLayout();
    }

    function takeFocus() {
        (confirmsByDefault ? confirm : cancel).forceActiveFocus();
    }

    implicitWidth: Tokens.size.alertWidth
    implicitHeight: content.implicitHeight + 2 * 20
    Accessible.role: Accessible.AlertMessage
    Accessible.name: message === "" ? title : title + " " + message

    Keys.onEscapePressed: cancelled()

    Column {
        id: content

        x: 20
        y: 20
        width: parent.width - 2 * 20

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "doc.on.clipboard.fill"
            color: Tokens.color.accentSymbol
            size: Tokens.size.emptySymbol
        }

        Item {
            width: 1
            height: 14
        }

        ReadText {
            objectName: "alert-title"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            maximumLineCount: 3
            font.pixelSize: Tokens.size.headline
            font.weight: Font.Bold
            text: card.title
        }

        Item {
            width: 1
            height: 6
            visible: card.message !== ""
        }

        ReadText {
            objectName: "alert-message"
            width: parent.width
            visible: card.message !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            maximumLineCount: 4
            color: Tokens.color.secondaryText
            font.pixelSize: Tokens.size.callout
            text: card.message
        }

        Item {
            width: 1
            height: 18
        }

        PushButton {
            id: confirm

            objectName: "alert-confirm"
            width: parent.width
            height: 30
            title: card.confirmTitle
            isDestructive: card.isDestructive
            isProminent: card.confirmsByDefault
            KeyNavigation.tab: cancel
            KeyNavigation.backtab: cancel
            KeyNavigation.down: cancel
            onClicked: card.confirmed()
        }

        Item {
            width: 1
            height: 8
        }

        PushButton {
            id: cancel

            objectName: "alert-cancel"
            width: parent.width
            height: 30
            title: card.cancelTitle
            KeyNavigation.tab: confirm
            KeyNavigation.backtab: confirm
            KeyNavigation.up: confirm
            onClicked: card.cancelled()
        }
    }
}
