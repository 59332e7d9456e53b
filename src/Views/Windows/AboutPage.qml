import QtQuick
import Tessly.Design
import Tessly.Windows

Item {
    id: page

    required property SettingsModel settings

    Column {
        anchors.centerIn: parent
        padding: 36
        spacing: 18

        Symbol {
            objectName: "about-symbol"
            anchors.horizontalCenter: parent.horizontalCenter
            name: "doc.on.clipboard.fill"
            color: Tokens.color.accentSymbol
            size: Tokens.size.aboutSymbol
        }

        ReadText {
            anchors.horizontalCenter: parent.horizontalCenter
            font.pixelSize: Tokens.size.largeTitle
            font.weight: Font.Bold
            text: "Tessly"
        }

        ReadText {
            objectName: "local-only"
            anchors.horizontalCenter: parent.horizontalCenter
            color: Tokens.color.secondaryText
            font.pixelSize: Tokens.size.formText
            text: "Local-only"
        }

        ReadText {
            objectName: "version"
            anchors.horizontalCenter: parent.horizontalCenter
            color: Tokens.color.tertiaryText
            font.pixelSize: Tokens.size.caption
            text: page.settings.versionText
        }
    }
}
