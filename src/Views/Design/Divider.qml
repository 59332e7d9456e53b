import QtQuick
import QtQuick.Window
import Tessly.Design

// A line of one device pixel.
Rectangle {
    height: 1 / Screen.devicePixelRatio
    color: Tokens.color.divider
    Accessible.ignored: true
}
