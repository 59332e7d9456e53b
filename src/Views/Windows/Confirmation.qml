import QtQuick
import Tessly.Design
import Tessly.Windows

// The alert's window.
Rectangle {
    id: root

    required property ConfirmationContent content

    implicitWidth: card.implicitWidth
    implicitHeight: card.implicitHeight
    color: Tokens.color.popup

    AlertCard {
        id: card

        anchors.fill: parent
        title: root.content.message
        message: ""
        confirmTitle: root.content.confirmTitle
        cancelTitle: root.content.cancelTitle
        confirmsByDefault: true
        onConfirmed: root.content.answered(true)
        onCancelled: root.content.answered(false)
    }

    Connections {
        target: root.content

        // A new question.
        function onChanged() {
            card.settle();
            card.takeFocus();
        }
    }
}
