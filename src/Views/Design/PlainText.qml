import QtQuick
import Tessly.Design

// Text on one line, whatever is in it. Read aloud with what it belongs to.
Text {
    color: Tokens.color.text
    font.pixelSize: Tokens.size.rowText
    textFormat: Text.PlainText
    wrapMode: Text.NoWrap
    maximumLineCount: 1
    elide: Text.ElideRight
    horizontalAlignment: Text.AlignLeft
    Accessible.ignored: true
}
