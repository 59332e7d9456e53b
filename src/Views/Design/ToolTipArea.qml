import QtQuick
import QtQuick.Window
import Tessly.Design

// Shows a tool tip once the pointer rests on what this is laid over.
Item {
    id: area

    required property string text

    readonly property bool isUp: Window.visibility !== Window.Hidden
    property bool isDue: false

    function wait() {
        isDue = false;
        if (isUp && hover.hovered && text !== "")
            delay.restart();
        else
            delay.stop();
    }

    anchors.fill: parent
    onIsUpChanged: wait()
    onTextChanged: wait()

    HoverHandler {
        id: hover

        onHoveredChanged: area.wait()
    }

    Timer {
        id: delay

        interval: Tokens.size.toolTipDelay
        onTriggered: area.isDue = true
    }

    Loader {
        active: area.isDue

        sourceComponent: ToolTip {
            target: area
            text: area.text
        }
    }
}
