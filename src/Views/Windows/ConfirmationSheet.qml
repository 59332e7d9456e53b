import QtQuick
import QtQuick.Window
import Tessly.Design
import Tessly.Windows

// Asks whether the history is really to be cleared, over everything else.
FocusScope {
    id: sheet

    required property SettingsModel settings

    property Item focusedBefore: null

    visible: settings.isClearingPending
    onVisibleChanged: {
        if (visible) {
            focusedBefore = Window.activeFocusItem;
            card.takeFocus();
        } else if (focusedBefore !== null) {
            focusedBefore.forceActiveFocus();
        }
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onWheel: event => event.accepted = true
    }

    Rectangle {
        anchors.fill: parent
        color: Tokens.color.scrim
    }

    RoundedRectangle {
        anchors.fill: plate
        anchors.margins: -1
        anchors.topMargin: 1
        anchors.bottomMargin: -4
        radius: plate.radius + 1
        color: Tokens.color.shadow
        opacity: 0.5
    }

    RoundedRectangle {
        id: plate

        objectName: "clear-confirmation"
        anchors.centerIn: parent
        width: card.implicitWidth
        height: card.implicitHeight
        radius: Tokens.size.panelRadius
        color: Tokens.color.popup
        border.width: 1 / Screen.devicePixelRatio
        border.color: Tokens.color.border

        AlertCard {
            id: card

            anchors.fill: parent
            title: sheet.settings.clearingTitle
            message: sheet.settings.clearingMessage
            confirmTitle: sheet.settings.clearingButton
            cancelTitle: "Cancel"
            isDestructive: true
            onConfirmed: sheet.settings.confirmClearing()
            onCancelled: sheet.settings.cancelClearing()
        }
    }
}
