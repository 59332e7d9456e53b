import QtQuick
import QtQuick.Window
import Tessly.Design
import Tessly.Windows

// The settings window.
Rectangle {
    id: root

    required property SettingsModel settings

    width: Tokens.size.settingsWidth
    height: Tokens.size.settingsHeight
    color: Tokens.color.window
    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: "Tessly Settings"

    Keys.onPressed: event => {
        if (event.key === Qt.Key_Escape || event.matches(StandardKey.Close)) {
            event.accepted = true;
            Window.window.close();
        } else if (event.key === Qt.Key_PageUp && event.modifiers === Qt.ControlModifier) {
            event.accepted = true;
            strip.select(settings.selectedTab - 1);
        } else if (event.key === Qt.Key_PageDown && event.modifiers === Qt.ControlModifier) {
            event.accepted = true;
            strip.select(settings.selectedTab + 1);
        }
    }

    // What waits for an answer to a question.
    Item {
        anchors.fill: parent
        enabled: !root.settings.isClearingPending

        TabStrip {
            id: strip

            width: parent.width
            settings: root.settings
        }

        Loader {
            id: page

            objectName: "page"
            anchors.top: strip.bottom
            anchors.bottom: parent.bottom
            width: parent.width
            sourceComponent: [general, privacy, shortcuts, about][root.settings.selectedTab]
        }

        // What is scrolled ends under it, without a gap.
        Divider {
            id: divider

            anchors.top: strip.bottom
            width: parent.width
        }

        BannerView {
            anchors.top: divider.bottom
            width: parent.width
            hasBanner: root.settings.hasBanner
            bannerMessage: root.settings.bannerMessage
            bannerKind: root.settings.bannerKind
            onDismissed: root.settings.dismissBanner()
        }
    }

    Component {
        id: general

        GeneralPage {
            settings: root.settings
        }
    }

    Component {
        id: privacy

        PrivacyPage {
            settings: root.settings
        }
    }

    Component {
        id: shortcuts

        ShortcutsPage {
            settings: root.settings
        }
    }

    Component {
        id: about

        AboutPage {
            settings: root.settings
        }
    }

    ConfirmationSheet {
        anchors.fill: parent
        settings: root.settings
    }
}
