import QtQuick
import Tessly.Design
import Tessly.Panel

// One kind to filter by.
RoundedRectangle {
    id: chip

    required property string title
    required property string symbol
    required property bool isSelected

    readonly property bool isLit: mouse.containsMouse

    signal clicked

    implicitWidth: content.implicitWidth + 2 * 10
    implicitHeight: content.implicitHeight + 2 * 6
    radius: height / 2
    color: isSelected ? Tokens.color.accent : Tokens.color.chip
    Accessible.role: Accessible.RadioButton
    Accessible.name: title
    Accessible.checkable: true
    Accessible.checked: isSelected
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

    Row {
        id: content

        anchors.centerIn: parent
        spacing: 5

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            name: chip.symbol
            color: label.color
            size: Tokens.size.caption + 3
        }

        PlainText {
            id: label

            color: chip.isSelected ? Tokens.color.onAccent : Tokens.color.text
            font.pixelSize: Tokens.size.caption
            font.weight: Font.DemiBold
            text: chip.title
        }
    }

    RoundedRectangle {
        anchors.fill: parent
        radius: parent.radius
        color: Tokens.color.buttonHover
        visible: chip.isLit && !chip.isSelected
    }

    MouseArea {
        id: mouse

        anchors.fill: parent
        hoverEnabled: true
        onClicked: chip.clicked()
    }

    FocusRing {
        control: chip
        radius: chip.radius + gap
    }
}
