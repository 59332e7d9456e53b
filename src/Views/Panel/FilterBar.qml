import QtQuick
import Tessly.Design
import Tessly.Panel

// All kinds, side by side.
Flickable {
    id: bar

    required property PanelModel panel

    contentWidth: chips.width
    implicitHeight: chips.height
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.HorizontalFlick
    Accessible.role: Accessible.Grouping
    Accessible.name: "Kind"

    Row {
        id: chips

        leftPadding: Tokens.size.panelPadding
        rightPadding: Tokens.size.panelPadding
        bottomPadding: 12
        spacing: 8

        Repeater {
            model: bar.panel.filters

            FilterChip {
                required property panelFilter modelData

                objectName: "filter-" + (modelData.kind === "" ? "all" : modelData.kind)
                title: modelData.title
                symbol: modelData.symbol
                isSelected: bar.panel.selectedKind === modelData.kind
                onClicked: bar.panel.chooseKind(modelData.kind)
            }
        }
    }
}
