import QtQuick
import Tessly.Design
import Tessly.Panel

// The quick paste panel.
Card {
    id: root

    required property PanelModel panel

    readonly property bool menuIsOpen: menu.isOpen

    width: Tokens.size.panelWidth
    height: Tokens.size.panelHeight
    Accessible.role: Accessible.Dialog
    Accessible.name: "Tessly"

    // What the control that has the keyboard leaves.
    Keys.onPressed: event => {
        if (event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown) {
            const direction = event.key === Qt.Key_PageUp ? -1 : 1;
            if (event.modifiers & Qt.ShiftModifier)
                root.panel.preview.scroll(direction);
            else
                root.panel.moveSelection(direction * history.page);
            event.accepted = true;
        } else if (/^[^\u0000-\u0020\u007f-\u00a0]/.test(event.text)
                   && !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))) {
            header.type(event.text);
            event.accepted = true;
        }
    }

    Header {
        id: header

        anchors.left: parent.left
        anchors.right: parent.right
        panel: root.panel
    }

    FilterBar {
        id: filters

        anchors.top: header.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        panel: root.panel
    }

    Divider {
        id: upperDivider

        anchors.top: filters.bottom
        width: parent.width
    }

    BannerView {
        id: banner

        anchors.top: upperDivider.bottom
        width: parent.width
        hasBanner: root.panel.hasBanner
        bannerMessage: root.panel.bannerMessage
        bannerKind: root.panel.bannerKind
        onDismissed: {
            root.panel.dismissBanner();
            header.takeFocus();
        }
    }

    History {
        id: history

        objectName: "history"
        anchors.top: banner.bottom
        anchors.bottom: lowerDivider.top
        width: parent.width
        visible: !root.panel.isEmpty
        panel: root.panel
        onMenuRequested: (clipID, isPinned, place) => menu.open(clipID, isPinned, menu.mapFromItem(null, place))
    }

    EmptyHistory {
        anchors.fill: history
        visible: root.panel.isEmpty
        isSearching: root.panel.query !== ""
    }

    Divider {
        id: lowerDivider

        anchors.bottom: footer.top
        width: parent.width
    }

    Footer {
        id: footer

        anchors.bottom: parent.bottom
        width: parent.width
        panel: root.panel
    }

    RowMenu {
        id: menu

        anchors.fill: parent
        panel: root.panel
        onClosed: header.takeFocus()
    }

    function presentationChanged() {
        menu.close();
        if (panel.isPresented) {
            Qt.callLater(header.takeFocus);
            history.beginAtTop();
        } else {
            header.leaveFocus();
        }
    }

    // It is made while the panel opens for the first time.
    Component.onCompleted: presentationChanged()

    Connections {
        target: root.panel

        function onIsPresentedChanged() {
            root.presentationChanged();
        }
    }
}
