import QtQuick
import QtQuick.Window
import Tessly.Design

// One tab's sections, from top to bottom. Scrolls where they do not fit, and to what gets the
// keyboard.
Flickable {
    id: page

    default property alias sections: column.data

    property Item focused: Window.activeFocusItem

    function isInside(item: Item): bool {
        for (let above = item; above !== null; above = above.parent) {
            if (above === column)
                return true;
        }
        return false;
    }

    function show(item: Item) {
        // With the heading above it.
        const top = item.mapToItem(column, 0, 0).y - 40;
        const bottom = item.mapToItem(column, 0, item.height).y + 12;
        if (top < contentY)
            contentY = Math.max(0, top);
        else if (bottom > contentY + height)
            contentY = Math.min(contentHeight, bottom) - height;
    }

    contentWidth: width
    contentHeight: column.height
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    onFocusedChanged: {
        if (focused !== null && isInside(focused))
            show(focused);
    }

    Column {
        id: column

        width: page.width
        topPadding: 14
        bottomPadding: 16
        leftPadding: 20
        rightPadding: 20
        spacing: 14
    }

    ScrollThumb {
        list: page
    }
}
