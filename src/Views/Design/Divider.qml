import QtQuick
import QtQuick.Window
import Tessly.Design

// A line of one device pixel, wherever it lies: a plain Rectangle would have two at some places of
// some scales.
RoundedRectangle {
    height: 1 / Screen.devicePixelRatio
    color: Tokens.color.divider
    Accessible.ignored: true
}
