import QtQuick
import Tessly.Design

// Shows which part of a list is seen, and moves it.
RoundedRectangle {
    id: thumb

    required property Flickable list

    readonly property real track: list.height - 2 * 4

    parent: list
    visible: list.visibleArea.heightRatio < 1
    x: list.width - width - 2
    y: 4 + list.visibleArea.yPosition * track
    width: 4
    height: Math.max(24, list.visibleArea.heightRatio * track)
    radius: width / 2
    color: Tokens.color.scrollThumb
    Accessible.ignored: true

    MouseArea {
        property real grip

        anchors.fill: parent
        anchors.leftMargin: -3
        anchors.rightMargin: -2
        preventStealing: true
        onPressed: event => grip = event.y
        onPositionChanged: event => {
            const list = thumb.list;
            const whole = list.contentHeight + list.topMargin + list.bottomMargin;
            const wanted = (thumb.y - 4 + event.y - grip) / thumb.track * whole;
            list.contentY = list.originY - list.topMargin
                + Math.max(0, Math.min(wanted, whole - list.height));
        }
    }
}
