import QtQuick
import Tessly.Design

// The line above a row of a section. It ends at the line around the section: over that it would be
// darker.
Divider {
    x: Tokens.size.formInset
    width: parent.width - x - height
}
