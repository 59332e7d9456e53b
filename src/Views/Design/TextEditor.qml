import QtQuick
import Tessly.Design

// Several lines of text to edit. The clipboard is not reached from here, as the toolkit's own way
// waits for the program that owns it: who uses this does what the signals ask for.
RoundedRectangle {
    id: editor

    required property string label
    required property string text

    signal edited(text: string)
    signal pasteWanted
    signal copyWanted(text: string)
    // Copy, and if that worked, call `insert` with nothing.
    signal cutWanted(text: string)

    // Puts a text in the place of what is selected.
    function insert(text: string) {
        area.remove(area.selectionStart, area.selectionEnd);
        area.insert(area.cursorPosition, text);
    }

    // Tab is no letter here.
    function leave(forward: bool) {
        area.nextItemInFocusChain(forward).forceActiveFocus(
            forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
    }

    function showCursor() {
        const cursor = area.cursorRectangle;
        if (cursor.y < view.contentY)
            view.contentY = cursor.y;
        else if (cursor.y + cursor.height > view.contentY + view.height)
            view.contentY = cursor.y + cursor.height - view.height;
    }

    radius: Tokens.size.groupRadius
    color: "transparent"

    Flickable {
        id: view

        anchors.fill: parent
        anchors.leftMargin: 12
        anchors.rightMargin: 12
        anchors.topMargin: 10
        anchors.bottomMargin: 10
        contentWidth: width
        contentHeight: area.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        TextEdit {
            id: area

            objectName: editor.objectName + "-text"
            width: view.width
            height: Math.max(implicitHeight, view.height)
            activeFocusOnTab: true
            color: Tokens.color.text
            selectionColor: Tokens.color.accent
            selectedTextColor: Tokens.color.onAccent
            selectByMouse: true
            font.family: "monospace"
            font.pixelSize: Tokens.size.formText
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.NoWrap
            text: editor.text
            onTextChanged: {
                if (text !== editor.text)
                    editor.edited(text);
            }
            onCursorRectangleChanged: editor.showCursor()

            Accessible.role: Accessible.EditableText
            Accessible.name: editor.label
            Accessible.multiLine: true
            Accessible.focusable: true
            Accessible.focused: activeFocus

            Keys.onPressed: event => {
                event.accepted = true;
                if (event.matches(StandardKey.Paste))
                    editor.pasteWanted();
                else if (event.matches(StandardKey.Copy))
                    editor.copyWanted(area.selectedText);
                else if (event.matches(StandardKey.Cut))
                    editor.cutWanted(area.selectedText);
                else if (event.key === Qt.Key_Tab || event.key === Qt.Key_Backtab)
                    editor.leave(event.key === Qt.Key_Tab && !(event.modifiers & Qt.ShiftModifier));
                else
                    event.accepted = false;
            }
        }

        ScrollThumb {
            list: view
        }
    }

    FocusRing {
        control: area
        gap: 0
        radius: editor.radius
    }
}
