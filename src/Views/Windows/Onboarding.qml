import QtQuick
import QtQuick.Window
import Tessly.Design
import Tessly.Windows

// The welcome window. Its background moves it, as it has no title bar.
Card {
    id: root

    required property OnboardingModel onboarding

    width: Tokens.size.onboardingWidth
    height: Tokens.size.onboardingHeight
    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: "Welcome to Tessly"

    Keys.onPressed: event => {
        switch (event.key) {
        case Qt.Key_Return:
        case Qt.Key_Enter:
            event.accepted = true;
            // A key that is still held from before does not count.
            if (!event.isAutoRepeat)
                onboarding.enable();
            break;
        case Qt.Key_Escape:
            event.accepted = true;
            Window.window.close();
            break;
        }
    }

    MouseArea {
        anchors.fill: parent
        onPressed: root.Window.window.startSystemMove()
    }

    // Scrolls where the screen is too low for all of it; the button stays in sight.
    Flickable {
        id: page

        objectName: "onboarding-page"
        anchors.top: parent.top
        anchors.bottom: enable.top
        anchors.bottomMargin: 12
        width: parent.width
        contentWidth: width
        contentHeight: rows.y + rows.height
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: interactive

        Column {
            id: header

            anchors.horizontalCenter: parent.horizontalCenter
            topPadding: 34
            bottomPadding: 28
            spacing: 15

            Symbol {
                anchors.horizontalCenter: parent.horizontalCenter
                name: "doc.on.clipboard.fill"
                color: Tokens.color.accentSymbol
                size: Tokens.size.onboardingSymbol
            }

            ReadText {
                objectName: "onboarding-title"
                anchors.horizontalCenter: parent.horizontalCenter
                font.pixelSize: Tokens.size.onboardingTitle
                font.weight: Font.Bold
                text: "Tessly"
                Accessible.role: Accessible.Heading
            }
        }

        Column {
            id: rows

            anchors.top: header.bottom
            x: 42
            width: parent.width - 2 * 42
            spacing: 18

            Repeater {
                model: root.onboarding.rows

                PermissionRow {}
            }
        }

        ScrollThumb {
            list: page
        }
    }

    ReadText {
        objectName: "onboarding-hint"
        anchors.left: parent.left
        anchors.leftMargin: 42
        anchors.right: copy.visible ? copy.left : enable.left
        anchors.rightMargin: 28
        anchors.verticalCenter: enable.verticalCenter
        color: Tokens.color.secondaryText
        font.pixelSize: Tokens.size.callout
        wrapMode: Text.Wrap
        maximumLineCount: 3
        text: root.onboarding.hint
    }

    PushButton {
        id: copy

        objectName: "copy-command"
        anchors.right: enable.left
        anchors.rightMargin: 12
        anchors.verticalCenter: enable.verticalCenter
        visible: root.onboarding.command !== ""
        title: "Copy Command"
        isLarge: true
        onClicked: root.onboarding.copyCommand()
    }

    PushButton {
        id: enable

        objectName: "enable-clipboard-history"
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 28
        title: "Enable"
        isLarge: true
        isProminent: true
        onClicked: root.onboarding.enable()
    }

    IconButton {
        objectName: "close"
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.margins: 12
        symbol: "xmark"
        symbolSize: 14
        help: "Close"
        color: Tokens.color.secondaryText
        onClicked: Window.window.close()
    }
}
