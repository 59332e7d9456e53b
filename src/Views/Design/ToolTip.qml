import QtQuick
import QtQuick.Window
import Tessly.Design

// A few words below what the pointer is on; above it where there is no room.
RoundedRectangle {
    id: toolTip

    required property Item target
    required property string text

    // Where the target was when the tool tip appeared. It goes when the pointer does.
    property point origin: Qt.point(0, 0)

    objectName: "tool-tip"
    parent: windowContent()
    x: Math.max(6, Math.min(origin.x + (target.width - width) / 2, parent.width - width - 6))
    y: origin.y + target.height + 6 + height <= parent.height
        ? origin.y + target.height + 6 : origin.y - height - 6
    z: 100
    width: label.implicitWidth + 16
    height: label.implicitHeight + 8
    radius: Tokens.size.keyCapRadius
    color: Tokens.color.popup
    border.width: 1
    border.color: Tokens.color.border

    // What the window shows; around that may be the shadow.
    function windowContent(): Item {
        let item = target;
        while (item.parent !== null && item.parent !== target.Window.contentItem)
            item = item.parent;
        return item;
    }

    Component.onCompleted: {
        const place = target.mapToItem(parent, 0, 0);
        origin = Qt.point(Math.round(place.x), Math.round(place.y));
    }

    PlainText {
        id: label

        anchors.centerIn: parent
        font.pixelSize: Tokens.size.caption
        text: toolTip.text
    }
}
