import QtQuick
import Tessly.Design

// Two buttons that make a number smaller and larger. Shows what `value` says, and tells of the wish
// to change it.
RoundedRectangle {
    id: stepper

    required property string label
    required property int value
    required property int minimumValue
    required property int maximumValue
    required property int stepSize

    readonly property bool canDecrease: value > minimumValue
    readonly property bool canIncrease: value < maximumValue

    signal changeWanted(value: int)

    function step(count: int) {
        const wanted = Math.max(minimumValue, Math.min(value + count * stepSize, maximumValue));
        if (wanted !== value)
            changeWanted(wanted);
    }

    implicitWidth: 58
    implicitHeight: 24
    radius: Tokens.size.buttonRadius
    color: Tokens.color.button
    border.width: 1
    border.color: Tokens.color.buttonBorder
    activeFocusOnTab: true
    Accessible.role: Accessible.SpinBox
    Accessible.name: label
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.onIncreaseAction: step(1)
    Accessible.onDecreaseAction: step(-1)

    Keys.onPressed: event => {
        event.accepted = true;
        switch (event.key) {
        case Qt.Key_Up:
        case Qt.Key_Right:
        case Qt.Key_Plus:
            step(1);
            break;
        case Qt.Key_Down:
        case Qt.Key_Left:
        case Qt.Key_Minus:
            step(-1);
            break;
        case Qt.Key_PageUp:
            step(10);
            break;
        case Qt.Key_PageDown:
            step(-10);
            break;
        default:
            event.accepted = false;
        }
    }

    MouseArea {
        anchors.fill: parent
        onPressed: stepper.forceActiveFocus(Qt.MouseFocusReason)
    }

    component Half: Item {
        id: half

        required property string symbol
        required property int direction
        required property bool canStep

        // Between the two, a click only brings the keyboard here.
        width: stepper.width / 2 - 3
        height: stepper.height

        RoundedRectangle {
            anchors.fill: parent
            anchors.margins: 1
            radius: stepper.radius - 1
            color: Tokens.color.text
            opacity: !half.canStep || !mouse.containsMouse ? 0 : mouse.pressed ? 0.12 : 0.05
        }

        Symbol {
            anchors.centerIn: parent
            name: half.symbol
            color: Tokens.color.text
            opacity: half.canStep ? 1 : 0.35
            size: 14
        }

        MouseArea {
            id: mouse

            anchors.fill: parent
            hoverEnabled: true
            onPressed: {
                stepper.forceActiveFocus(Qt.MouseFocusReason);
                stepper.step(half.direction);
                repeat.interval = 400;
                repeat.start();
            }
            onReleased: repeat.stop()
            onCanceled: repeat.stop()
        }

        // As long as the button is held.
        Timer {
            id: repeat

            repeat: true
            onTriggered: {
                interval = 80;
                if (mouse.containsMouse)
                    stepper.step(half.direction);
            }
        }
    }

    Half {
        objectName: stepper.objectName + "-decrease"
        symbol: "minus"
        direction: -1
        canStep: stepper.canDecrease
    }

    Half {
        objectName: stepper.objectName + "-increase"
        x: stepper.width - width
        symbol: "plus"
        direction: 1
        canStep: stepper.canIncrease
    }

    RoundedRectangle {
        anchors.centerIn: parent
        width: 1
        height: parent.height - 10
        color: Tokens.color.divider
    }

    FocusRing {
        control: stepper
        radius: stepper.radius + gap
    }
}
