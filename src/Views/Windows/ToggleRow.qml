import QtQuick
import Tessly.Design

// A setting that is on or off.
FormRow {
    id: row

    required property string name
    required property bool isOn

    signal toggled

    Toggle {
        objectName: row.name
        label: row.label
        isOn: row.isOn
        onToggled: row.toggled()
    }
}
