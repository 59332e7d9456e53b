import QtQuick
import Tessly.Design

// Text on one line, whatever is in it.
Text {
    // Whether assistive technology reads it by itself, and not with what it belongs to.
    property bool isRead: false

    color: Tokens.color.text
    font.pixelSize: Tokens.size.rowText
    textFormat: Text.PlainText
    wrapMode: Text.NoWrap
    maximumLineCount: 1
    elide: Text.ElideRight
    horizontalAlignment: Text.AlignLeft
    Accessible.ignored: !isRead
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
