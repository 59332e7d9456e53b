import QtQuick
import Tessly.Design

// A switch. Shows what `isOn` says, and tells of the wish to change it.
RoundedRectangle {
    id: toggle

    required property bool isOn
    required property string label

    signal toggled

    implicitWidth: 36
    implicitHeight: 20
    radius: height / 2
    color: isOn ? Tokens.color.switchOn : Tokens.color.switchOff
    border.width: 1
    border.color: isOn ? Tokens.color.switchOn : Tokens.color.switchOffBorder
    activeFocusOnTab: true
    Accessible.role: Accessible.CheckBox
    Accessible.name: label
    Accessible.checkable: true
    Accessible.checked: isOn
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.onToggleAction: toggled()
    Accessible.onPressAction: toggled()

    Keys.onPressed: event => {
        if (event.key === Qt.Key_Space) {
            event.accepted = true;
            if (!event.isAutoRepeat)
                toggled();
        }
    }

    Behavior on color {
        ColorAnimation {
            duration: Tokens.size.appearance
        }
    }

    RoundedRectangle {
        x: toggle.isOn ? parent.width - width - 2 : 2
        anchors.verticalCenter: parent.verticalCenter
        width: 16
        height: 16
        radius: 8
        color: Tokens.color.switchThumb

        Behavior on x {
            NumberAnimation {
                duration: Tokens.size.appearance
                easing.type: Easing.OutCubic
            }
        }
    }

    MouseArea {
        anchors.fill: parent
        onPressed: toggle.forceActiveFocus(Qt.MouseFocusReason)
        onClicked: toggle.toggled()
    }

    FocusRing {
        control: toggle
        radius: toggle.radius + gap
    }
}
