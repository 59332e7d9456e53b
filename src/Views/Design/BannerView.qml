import QtQuick
import Tessly.Design

// One line of news, with a button to dismiss it. Comes and goes at the top edge.
Item {
    id: banner

    required property bool hasBanner
    required property string bannerMessage
    required property string bannerKind

    signal dismissed

    // What is shown stays while it leaves.
    property string message
    property string kind: "information"

    readonly property string symbol: kind === "error" ? "xmark.octagon.fill"
        : kind === "warning" ? "exclamationmark.triangle.fill" : "info.circle.fill"
    readonly property color background: kind === "error" ? Tokens.color.bannerError
        : kind === "warning" ? Tokens.color.bannerWarning : Tokens.color.bannerInformation

    function update() {
        if (hasBanner) {
            message = bannerMessage;
            kind = bannerKind;
        }
    }

    // How much of it has come in, 0 to 1.
    property real presence: hasBanner ? 1 : 0

    Behavior on presence {
        NumberAnimation {
            duration: Tokens.size.appearance
            easing.type: Easing.OutCubic
        }
    }

    height: Math.round(presence * (plate.height + plate.topMargin))
    visible: presence > 0
    clip: presence < 1
    onHasBannerChanged: update()
    onBannerMessageChanged: update()
    onBannerKindChanged: update()
    Component.onCompleted: update()

    // The shadow of the plate, in steps.
    Repeater {
        model: Tokens.size.shadowRadius

        RoundedRectangle {
            required property int index

            anchors.fill: plate
            anchors.margins: -index - 1
            radius: plate.radius + index + 1
            color: Tokens.color.shadow
            opacity: banner.presence / (2 * Tokens.size.shadowRadius)
        }
    }

    RoundedRectangle {
        id: plate

        readonly property int topMargin: 10

        objectName: "banner"
        x: 16
        y: parent.height - height
        width: parent.width - 2 * 16
        height: Math.max(text.implicitHeight, 20) + 2 * 10
        radius: Tokens.size.bannerRadius
        color: banner.background
        opacity: banner.presence
        Accessible.role: Accessible.AlertMessage
        Accessible.name: banner.message

        Symbol {
            id: symbol

            objectName: "banner-symbol"
            anchors.left: parent.left
            anchors.leftMargin: 13
            anchors.verticalCenter: parent.verticalCenter
            name: banner.symbol
            color: Tokens.color.onBanner
            size: Tokens.size.callout + 4
        }

        PlainText {
            id: text

            objectName: "banner-message"
            anchors.left: symbol.right
            anchors.right: dismiss.left
            anchors.margins: 8
            anchors.verticalCenter: parent.verticalCenter
            color: Tokens.color.onBanner
            font.pixelSize: Tokens.size.callout
            maximumLineCount: 2
            wrapMode: Text.Wrap
            text: banner.message
        }

        IconButton {
            id: dismiss

            objectName: "dismiss-banner"
            anchors.right: parent.right
            anchors.rightMargin: 13 - 4
            anchors.verticalCenter: parent.verticalCenter
            symbol: "xmark"
            symbolSize: Tokens.size.callout + 2
            help: ""
            label: "Dismiss"
            color: Tokens.color.onBanner
            onClicked: banner.dismissed()
        }
    }
}
