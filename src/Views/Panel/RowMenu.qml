import QtQuick
import Tessly.Design
import Tessly.Panel

// What can be done with one entry. Covers the panel while it is open; a press beside it closes it.
MouseArea {
    id: menu

    required property PanelModel panel

    readonly property bool isOpen: visible
    property string clipID
    property bool isPinned: false
    property int current: -1
    // Where the pointer was last. One that rests does not undo what keys have done.
    property point lastPointer

    signal closed

    function open(clipID: string, isPinned: bool, place: point) {
        menu.clipID = clipID;
        menu.isPinned = isPinned;
        current = -1;
        lastPointer = place;
        plate.x = Math.max(6, Math.min(place.x, width - plate.width - 6));
        plate.y = Math.max(6, Math.min(place.y, height - plate.height - 6));
        visible = true;
        forceActiveFocus();
    }

    function close() {
        if (!visible)
            return;
        visible = false;
        closed();
    }

    function pointerMoved(command: int, place: point) {
        if (Math.abs(place.x - lastPointer.x) < 1 && Math.abs(place.y - lastPointer.y) < 1)
            return;
        lastPointer = place;
        current = command;
    }

    function trigger(command: int) {
        close();
        switch (command) {
        case 0:
            panel.copyClip(clipID, false);
            break;
        case 1:
            panel.copyClip(clipID, true);
            break;
        case 2:
            panel.togglePinOfClip(clipID);
            break;
        case 3:
            panel.deleteClip(clipID);
            break;
        }
    }

    visible: false
    acceptedButtons: Qt.AllButtons
    hoverEnabled: true
    onPressed: close()
    onWheel: event => event.accepted = true
    onPositionChanged: event => {
        // The toolkit tells of the pointer here also where it is on a command, which tells by itself.
        const inside = mapToItem(commands, event.x, event.y);
        if (!(commands.childAt(inside.x, inside.y) instanceof MenuItem))
            pointerMoved(-1, Qt.point(event.x, event.y));
    }
    Keys.onPressed: event => {
        event.accepted = true;
        switch (event.key) {
        case Qt.Key_Down:
            current = (current + 1) % 4;
            break;
        case Qt.Key_Up:
            current = (current + (current < 0 ? 4 : 3)) % 4;
            break;
        case Qt.Key_Return:
        case Qt.Key_Enter:
        case Qt.Key_Space:
            if (current >= 0)
                trigger(current);
            break;
        case Qt.Key_Escape:
            close();
            break;
        }
    }

    RoundedRectangle {
        anchors.fill: plate
        anchors.margins: -1
        anchors.topMargin: 1
        anchors.bottomMargin: -3
        radius: plate.radius + 1
        color: Tokens.color.shadow
        opacity: 0.5
    }

    RoundedRectangle {
        id: plate

        objectName: "row-menu"
        width: commands.width + 2 * 5
        height: commands.height + 2 * 5
        radius: Tokens.size.popupRadius
        color: Tokens.color.popup
        border.width: 1
        border.color: Tokens.color.border
        Accessible.role: Accessible.PopupMenu
        Accessible.name: "Clip"

        Column {
            id: commands

            readonly property real itemWidth: Math.max(
                160, copy.implicitWidth, copyPlain.implicitWidth, pin.implicitWidth, remove.implicitWidth)

            x: 5
            y: 5

            MenuItem {
                id: copy

                objectName: "menu-copy"
                width: commands.itemWidth
                title: "Copy"
                isCurrent: menu.current === 0
                onHovered: place => menu.pointerMoved(0, menu.mapFromItem(null, place))
                onTriggered: menu.trigger(0)
            }

            MenuItem {
                id: copyPlain

                objectName: "menu-copy-plain"
                width: commands.itemWidth
                title: "Copy as Plain Text"
                isCurrent: menu.current === 1
                onHovered: place => menu.pointerMoved(1, menu.mapFromItem(null, place))
                onTriggered: menu.trigger(1)
            }

            Item {
                width: commands.itemWidth
                height: 9

                Divider {
                    width: parent.width
                    anchors.verticalCenter: parent.verticalCenter
                }
            }

            MenuItem {
                id: pin

                objectName: "menu-pin"
                width: commands.itemWidth
                title: menu.isPinned ? "Unpin" : "Pin"
                isCurrent: menu.current === 2
                onHovered: place => menu.pointerMoved(2, menu.mapFromItem(null, place))
                onTriggered: menu.trigger(2)
            }

            MenuItem {
                id: remove

                objectName: "menu-delete"
                width: commands.itemWidth
                title: "Delete"
                isDestructive: true
                isCurrent: menu.current === 3
                onHovered: place => menu.pointerMoved(3, menu.mapFromItem(null, place))
                onTriggered: menu.trigger(3)
            }
        }
    }
}
