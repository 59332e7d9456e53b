import QtQuick
import Tessly.Design

// A button that is nothing but a symbol.
Item {
    id: button

    required property string symbol
    required property string help
    property string label: help
    property color color: Tokens.color.text
    property int symbolSize: Tokens.size.buttonSymbol
    readonly property bool isPressed: mouse.pressed
    readonly property bool isLit: hover.hovered

    signal clicked

    implicitWidth: symbolSize + 8
    implicitHeight: symbolSize + 8
    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.onPressAction: clicked()
    activeFocusOnTab: true

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
        radius: Tokens.size.keyCapRadius
        color: button.color
        opacity: button.isPressed ? 0.16 : button.isLit ? 0.08 : 0
    }

    Symbol {
        anchors.centerIn: parent
        name: button.symbol
        color: button.color
        size: button.symbolSize
    }

    MouseArea {
        id: mouse

        anchors.fill: parent
        onClicked: button.clicked()
    }

    // The tool tip's area lies over the other, which therefore does not hear of the pointer.
    HoverHandler {
        id: hover
    }

    FocusRing {
        control: button
        radius: Tokens.size.keyCapRadius
        gap: 0
    }

    ToolTipArea {
        text: button.help
    }
}
