import QtQuick
import QtQuick.Window
import Tessly.Design
import Tessly.Windows

// The status menu's window.
Rectangle {
    id: menu

    required property StatusMenuContent content

    // Where the pointer was last. Its first place counts for nothing: the menu may have opened there.
    // One that rests does not undo what keys have done.
    property point lastPointer: Qt.point(NaN, NaN)

    function pointerMoved(line: int, place: point) {
        const isFirst = isNaN(lastPointer.x);
        if (Math.abs(place.x - lastPointer.x) < 1 && Math.abs(place.y - lastPointer.y) < 1)
            return;
        lastPointer = place;
        if (!isFirst)
            content.current = line;
    }

    // Takes its size from lines that have just been set.
    function settle() {
        lines.forceLayout();
    }

    implicitWidth: lines.width + 2 * 5
    implicitHeight: lines.height + 2 * 5
    radius: Tokens.size.popupRadius
    color: Tokens.color.popup
    border.width: 1 / Screen.devicePixelRatio
    border.color: Tokens.color.border
    Accessible.role: Accessible.PopupMenu
    Accessible.name: "Tessly"

    Connections {
        target: menu.content

        function onLinesChanged() {
            menu.lastPointer = Qt.point(NaN, NaN);
        }
    }

    HoverHandler {
        onHoveredChanged: {
            if (!hovered)
                menu.content.current = -1;
        }
    }

    Column {
        id: lines

        // All lines are as wide as the widest.
        property real widest: 180

        x: 5
        y: 5
        width: widest

        Repeater {
            model: menu.content.lines

            Item {
                id: line

                required property int index
                required property statusMenuLine modelData

                width: lines.widest
                height: modelData.isSeparator ? 9 : item.implicitHeight

                Divider {
                    visible: line.modelData.isSeparator
                    width: parent.width
                    anchors.verticalCenter: parent.verticalCenter
                }

                MenuItem {
                    id: item

                    objectName: "menu-" + line.modelData.action
                    visible: !line.modelData.isSeparator
                    Accessible.ignored: line.modelData.isSeparator
                    width: parent.width
                    title: line.modelData.title
                    keys: line.modelData.keys
                    isEnabled: line.modelData.isEnabled
                    isCurrent: line.index === menu.content.current
                    onHovered: place => menu.pointerMoved(line.index, place)
                    onTriggered: menu.content.choose(line.index)
                    onImplicitWidthChanged: lines.widest = Math.max(lines.widest, implicitWidth)
                    Component.onCompleted: lines.widest = Math.max(lines.widest, implicitWidth)
                }
            }
        }
    }
}
