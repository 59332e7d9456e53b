import QtQuick
import Tessly.Design

// A button with a title.
RoundedRectangle {
    id: button

    required property string title
    // The one that is meant to be pressed.
    property bool isProminent: false
    property bool isDestructive: false
    property bool isLarge: false

    signal clicked

    implicitWidth: label.implicitWidth + 2 * (isLarge ? 22 : 12)
    implicitHeight: isLarge ? Tokens.size.largeButtonHeight : Tokens.size.buttonHeight
    radius: Tokens.size.buttonRadius
    color: isProminent ? Tokens.color.accent : Tokens.color.button
    border.width: isProminent ? 0 : 1
    border.color: Tokens.color.buttonBorder
    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: title
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.defaultButton: isProminent
    Accessible.onPressAction: clicked()

    Keys.onPressed: event => {
        switch (event.key) {
        case Qt.Key_Space:
        case Qt.Key_Return:
        case Qt.Key_Enter:
            event.accepted = true;
            if (!event.isAutoRepeat)
                clicked();
            break;
        }
    }

    RoundedRectangle {
        anchors.fill: parent
        radius: parent.radius
        color: button.isProminent ? Tokens.color.onAccent : Tokens.color.text
        opacity: mouse.pressed && mouse.containsMouse ? 0.12 : mouse.containsMouse ? 0.05 : 0
    }

    PlainText {
        id: label

        anchors.centerIn: parent
        width: Math.min(implicitWidth, button.width - 12)
        color: button.isProminent ? Tokens.color.onAccent
            : button.isDestructive ? Tokens.color.destructive : Tokens.color.text
        font.pixelSize: button.isLarge ? Tokens.size.headline : Tokens.size.formText
        font.weight: button.isProminent ? Font.DemiBold : Font.Medium
        text: button.title
    }

    MouseArea {
        id: mouse

        anchors.fill: parent
        hoverEnabled: true
        onPressed: button.forceActiveFocus(Qt.MouseFocusReason)
        onClicked: button.clicked()
    }

    FocusRing {
        control: button
        radius: button.radius + gap
    }
}
