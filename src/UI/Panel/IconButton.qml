import QtQuick
import Tessly.Panel

// A button that is nothing but a symbol.
Item {
    id: button

    required property string symbol
    required property string help
    property string label: help
    property color color: Tokens.color.text
    property int symbolSize: Tokens.size.buttonSymbol

    signal clicked

    implicitWidth: symbolSize + 8
    implicitHeight: symbolSize + 8
    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.onPressAction: clicked()

    Rectangle {
        anchors.fill: parent
        radius: Tokens.size.keyCapRadius
        color: button.color
        opacity: mouse.pressed ? 0.16 : mouse.containsMouse ? 0.08 : 0
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
        hoverEnabled: true
        onClicked: button.clicked()
    }

    ToolTipArea {
        text: button.help
    }
}
