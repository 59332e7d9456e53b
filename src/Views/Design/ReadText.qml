import QtQuick
import Tessly.Design

// Text that is read aloud by itself.
PlainText {
    Accessible.ignored: false
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
