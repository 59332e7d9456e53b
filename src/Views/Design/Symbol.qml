import QtQuick
import QtQuick.Window
import Tessly.Design

// A symbol in one colour.
Image {
    id: symbol

    required property string name
    required property color color
    property int size: 20

    function hex(value: real): string {
        return Math.round(value * 255).toString(16).padStart(2, "0");
    }

    width: size
    height: size
    sourceSize: Qt.size(Math.ceil(size * Screen.devicePixelRatio), Math.ceil(size * Screen.devicePixelRatio))
    source: name === "" ? "" : "image://symbol/" + name + "/"
        + hex(color.a) + hex(color.r) + hex(color.g) + hex(color.b)
    Accessible.ignored: true
}
