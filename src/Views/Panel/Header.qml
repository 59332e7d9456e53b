import QtQuick
import Tessly.Design
import Tessly.Panel

// The search field between the program's symbol and the buttons.
Item {
    id: header

    required property PanelModel panel

    function takeFocus() {
        search.takeFocus();
    }

    // Text that was typed elsewhere.
    function type(text: string) {
        search.takeFocus();
        search.replaceSelection(text);
    }

    function leaveFocus() {
        search.leaveFocus();
    }

    implicitHeight: 17 + settings.implicitHeight + 12

    Symbol {
        id: symbol

        anchors.left: parent.left
        anchors.leftMargin: Tokens.size.panelPadding
        anchors.verticalCenter: settings.verticalCenter
        name: "doc.on.clipboard.fill"
        color: Tokens.color.accentSymbol
        size: Tokens.size.headerSymbol
    }

    SearchField {
        id: search

        anchors.left: symbol.right
        anchors.right: pause.left
        anchors.margins: 12
        anchors.verticalCenter: settings.verticalCenter
        panel: header.panel
    }

    IconButton {
        id: pause

        objectName: "pause-recording"
        anchors.right: settings.left
        anchors.rightMargin: 12 - 8
        anchors.verticalCenter: settings.verticalCenter
        symbol: header.panel.isPaused ? "record.circle" : "pause.circle"
        help: header.panel.isPaused ? "Resume clipboard recording" : "Pause clipboard recording"
        onClicked: header.panel.togglePaused()
    }

    IconButton {
        id: settings

        objectName: "open-settings"
        y: 17
        // The symbol keeps the padding; what lights up around it does not count.
        anchors.right: parent.right
        anchors.rightMargin: Tokens.size.panelPadding - 4
        symbol: "gearshape"
        help: "Settings"
        onClicked: header.panel.openSettings()
    }
}
