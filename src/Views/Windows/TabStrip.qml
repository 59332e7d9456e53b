import QtQuick
import Tessly.Design
import Tessly.Windows

// The tabs, side by side. The selected one is the one that Tab comes to; arrows move from it.
Item {
    id: strip

    required property SettingsModel settings

    function select(index: int) {
        const count = settings.tabs.length;
        settings.selectedTab = (index + count) % count;
        tabs.itemAt(settings.selectedTab).forceActiveFocus(Qt.TabFocusReason);
    }

    implicitHeight: 66
    Accessible.role: Accessible.PageTabList
    Accessible.name: "Settings"

    Row {
        anchors.centerIn: parent
        spacing: 6

        Repeater {
            id: tabs

            model: strip.settings.tabs

            RoundedRectangle {
                id: tab

                required property int index
                required property settingsTab modelData

                readonly property bool isSelected: index === strip.settings.selectedTab
                readonly property color ink: isSelected ? Tokens.color.accentText : Tokens.color.secondaryText

                objectName: "tab-" + modelData.name
                width: Math.max(80, title.implicitWidth + 2 * 12)
                height: 52
                radius: Tokens.size.popupRadius
                color: isSelected ? Tokens.color.chip : "transparent"
                // It cannot leave the chain while it has the keyboard.
                activeFocusOnTab: isSelected || activeFocus
                Accessible.role: Accessible.PageTab
                Accessible.name: modelData.title
                Accessible.selectable: true
                Accessible.selected: isSelected
                Accessible.focusable: true
                Accessible.focused: activeFocus
                Accessible.onPressAction: strip.settings.selectedTab = index
                Keys.onLeftPressed: strip.select(strip.settings.selectedTab - 1)
                Keys.onRightPressed: strip.select(strip.settings.selectedTab + 1)

                Symbol {
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: 7
                    name: tab.modelData.symbol
                    color: tab.ink
                    size: Tokens.size.tabSymbol
                }

                PlainText {
                    id: title

                    anchors.horizontalCenter: parent.horizontalCenter
                    anchors.bottom: parent.bottom
                    anchors.bottomMargin: 5
                    color: tab.ink
                    font.pixelSize: Tokens.size.caption
                    font.weight: Font.Medium
                    text: tab.modelData.title
                }

                RoundedRectangle {
                    anchors.fill: parent
                    radius: parent.radius
                    color: Tokens.color.buttonHover
                    visible: mouse.containsMouse && !tab.isSelected
                }

                MouseArea {
                    id: mouse

                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: {
                        strip.settings.selectedTab = tab.index;
                        tab.forceActiveFocus(Qt.MouseFocusReason);
                    }
                }

                FocusRing {
                    control: tab
                    gap: 0
                    radius: tab.radius
                }
            }
        }
    }
}
