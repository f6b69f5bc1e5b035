import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The cashier's input of several fields at once, built from the context
// property "params": {title, button, fields: [{name, type ("string" or
// "date"), label, value, pattern, format}]}.
//
// A field passes its check when its whole value matches its pattern (an empty
// pattern accepts anything); a date field when it holds a date written in its
// format ("dd.MM.yyyy"). The confirm button stays disabled while a field fails.
//
// The form answers through two signals: answered(data), data mapping each
// field's name to its value (a date as ISO text, "yyyy-MM-dd"), or cancelled().
Pane {
    id: form

    signal answered(var data)
    signal cancelled()

    readonly property var request: params
    // Whether every field passes its check.
    readonly property bool acceptable: {
        for (let i = 0; i < fields.count; ++i) {
            const field = fields.itemAt(i)
            if (!field || !field.valid)
                return false
        }
        return true
    }

    function confirm() {
        if (!acceptable)
            return
        const data = {}
        for (let i = 0; i < fields.count; ++i) {
            const field = fields.itemAt(i)
            data[field.modelData.name] = field.value
        }
        answered(data)
    }

    padding: 24
    implicitWidth: 560

    // Keys the fields leave unhandled: Enter confirms, Escape cancels.
    Keys.onReturnPressed: confirm()
    Keys.onEnterPressed: confirm()
    Keys.onEscapePressed: cancelled()

    ColumnLayout {
        anchors.fill: parent
        spacing: 16

        Label {
            text: form.request.title
            font.pixelSize: 20
            font.bold: true
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }

        Repeater {
            id: fields
            model: form.request.fields

            delegate: RowLayout {
                id: field

                required property var modelData
                required property int index
                readonly property bool isDate: modelData.type === "date"
                readonly property var typedDate: Date.fromLocaleDateString(Qt.locale(), input.text, modelData.format)
                readonly property bool valid: isDate ? !isNaN(typedDate.getTime())
                                                     : !modelData.pattern || new RegExp("^(?:" + modelData.pattern + ")$").test(input.text)
                readonly property string value: isDate ? (valid ? Qt.formatDate(typedDate, "yyyy-MM-dd") : "") : input.text

                spacing: 12
                Layout.fillWidth: true

                Label {
                    text: field.modelData.label
                    Layout.preferredWidth: 180
                }
                TextField {
                    id: input
                    objectName: "field_" + field.modelData.name
                    text: field.modelData.value
                    placeholderText: field.isDate ? field.modelData.format.toLowerCase() : ""
                    color: field.valid ? palette.text : "#c62828"
                    focus: field.index === 0
                    Layout.fillWidth: true
                }
            }
        }

        RowLayout {
            spacing: 12
            Layout.topMargin: 8

            Item {
                Layout.fillWidth: true
            }
            Button {
                objectName: "cancelButton"
                text: "Отмена"
                onClicked: form.cancelled()
            }
            Button {
                objectName: "confirmButton"
                text: form.request.button
                highlighted: true
                enabled: form.acceptable
                onClicked: form.confirm()
            }
        }
    }
}
