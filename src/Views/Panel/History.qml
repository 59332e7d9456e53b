import QtQuick
import QtQuick.Window
import Tessly.Design
import Tessly.Panel

// The entries, newest and pinned first.
ListView {
    id: list

    required property PanelModel panel

    signal menuRequested(clipID: string, isPinned: bool, place: point)

    // Where the pointer was last, on the desktop. The selection follows the pointer onto a row once
    // it really moves: rows also come to lie under a pointer that stands still.
    property point lastPointer: Qt.point(-1, -1)
    readonly property bool pointerHasMoved: Window.window?.pointerHasMoved ?? false
    property string hoveredClip
    property bool isHoverSelecting: false

    // Rows that are seen at once; one of them stays in sight when a page is turned.
    readonly property int page: Math.max(1, Math.floor(height / (rowHeight + spacing)) - 1)
    property real rowHeight: 60

    function pointerMoved(row: ClipRow, place: point) {
        if (!pointerHasMoved)
            return;
        if (Math.abs(place.x - lastPointer.x) < 1 && Math.abs(place.y - lastPointer.y) < 1)
            return;
        lastPointer = place;
        if (hoveredClip === row.clipID)
            return;
        hoveredClip = row.clipID;
        isHoverSelecting = true;
        panel.selectClip(row.clipID);
        isHoverSelecting = false;
    }

    function pointerLeft(row: ClipRow) {
        if (hoveredClip === row.clipID)
            hoveredClip = "";
    }

    function beginAtTop() {
        hoveredClip = "";
        lastPointer = Qt.point(NaN, NaN);
        cancelFlick();
        positionViewAtBeginning();
        contentY = originY - topMargin;
    }

    function showSelection() {
        if (isHoverSelecting || panel.selectedRow < 0)
            return;
        positionViewAtIndex(panel.selectedRow, ListView.Contain);
        const row = itemAtIndex(panel.selectedRow);
        if (row === null)
            return;
        // As far from the edge as the first row and the last are.
        const highest = row.y - topMargin;
        const lowest = row.y + row.height + bottomMargin - height;
        if (contentY > highest)
            contentY = highest;
        else if (contentY < lowest)
            contentY = lowest;
    }

    model: panel.clips
    clip: true
    spacing: 4
    topMargin: 8
    bottomMargin: 8
    boundsBehavior: Flickable.StopAtBounds
    cacheBuffer: 0
    keyNavigationEnabled: false
    Accessible.role: Accessible.List
    Accessible.name: "Clipboard history"

    delegate: ClipRow {
        id: row

        // Newer views put every row at 0, whatever its x is.
        transform: Translate {
            x: 8
        }
        width: ListView.view.width - 2 * 8
        isSelected: index === list.panel.selectedRow
        onHeightChanged: list.rowHeight = height
        Accessible.onPressAction: list.panel.activateClip(clipID)

        MouseArea {
            anchors.fill: parent
            z: -1
            acceptedButtons: Qt.LeftButton | Qt.RightButton
            hoverEnabled: true
            onPositionChanged: event => list.pointerMoved(row, mapToGlobal(event.x, event.y))
            onEntered: list.pointerMoved(row, mapToGlobal(mouseX, mouseY))
            onExited: list.pointerLeft(row)
            onClicked: event => {
                if (event.button === Qt.LeftButton)
                    list.panel.activateClip(row.clipID);
            }
            onPressed: event => {
                if (event.button === Qt.RightButton)
                    list.menuRequested(row.clipID, row.isPinned, mapToItem(null, event.x, event.y));
            }
        }
    }

    Connections {
        target: list.panel

        function onSelectionChanged() {
            list.showSelection();
        }
    }

    ScrollThumb {
        list: list
    }
}
