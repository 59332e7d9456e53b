import QtQuick
import Tessly.Design

// A setting that is a number.
FormRow {
    id: row

    required property string name
    required property int value
    required property int minimumValue
    required property int maximumValue
    property int stepSize: 1

    signal changeWanted(value: int)

    Stepper {
        objectName: row.name
        label: row.label
        value: row.value
        minimumValue: row.minimumValue
        maximumValue: row.maximumValue
        stepSize: row.stepSize
        onChangeWanted: value => row.changeWanted(value)
    }
}
