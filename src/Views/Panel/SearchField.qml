import QtQuick
import Tessly.Design
import Tessly.Panel

// Where the user types. The clipboard is reached through the model alone: the toolkit's own way
// waits for the program that owns it.
Item {
    id: field

    required property PanelModel panel

    function takeFocus() {
        input.forceActiveFocus();
    }

    // A cursor that blinks wakes the program.
    function leaveFocus() {
        input.focus = false;
    }

    implicitHeight: input.implicitHeight

    // The input leaves the arrow that leads out of it: at the end of what is typed, that towards
    // the preview.
    Keys.onPressed: event => {
        const leadsOut = event.key === Qt.Key_Right || (event.key === Qt.Key_Left && input.length > 0);
        if (leadsOut && event.modifiers === Qt.NoModifier && input.cursorPosition === input.length) {
            panel.preview.show();
            event.accepted = true;
        }
    }

    TextInput {
        id: input

        objectName: "clipboard-search"
        anchors.fill: parent
        clip: true
        color: Tokens.color.text
        selectionColor: Tokens.color.accent
        selectedTextColor: Tokens.color.onAccent
        selectByMouse: true
        activeFocusOnTab: true
        maximumLength: field.panel.queryLength
        font.pixelSize: Tokens.size.searchText
        font.weight: Font.Medium
        verticalAlignment: TextInput.AlignVCenter
        text: field.panel.query
        onTextEdited: field.panel.query = text

        Accessible.role: Accessible.EditableText
        Accessible.name: placeholder.text
        Accessible.searchEdit: true

        Keys.onPressed: event => {
            if (event.matches(StandardKey.Paste)) {
                field.panel.pasteIntoQuery();
                event.accepted = true;
            } else if (event.matches(StandardKey.Copy)) {
                field.panel.copyQueryText(input.selectedText);
                event.accepted = true;
            } else if (event.matches(StandardKey.Cut)) {
                if (field.panel.copyQueryText(input.selectedText))
                    field.replaceSelection("");
                event.accepted = true;
            }
        }
    }

    PlainText {
        id: placeholder

        anchors.fill: parent
        // Beside the cursor, not under it.
        anchors.leftMargin: 2
        visible: input.text === "" && input.preeditText === ""
        color: Tokens.color.secondaryText
        font: input.font
        verticalAlignment: Text.AlignVCenter
        text: "Search clipboard history"
    }

    function replaceSelection(text: string) {
        input.remove(input.selectionStart, input.selectionEnd);
        input.insert(input.cursorPosition, text);
        panel.query = input.text;
    }

    Connections {
        target: field.panel

        function onQueryTextPasted(text: string) {
            field.replaceSelection(text);
        }
    }
}
