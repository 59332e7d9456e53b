import QtQuick
import Tessly.Design
import Tessly.Windows

FormPage {
    id: page

    required property SettingsModel settings

    FormSection {
        title: "Clipboard access"

        ValueRow {
            name: "clipboard-access"
            label: "Background history"
            value: page.settings.clipboardAccessDescription
            valueColor: page.settings.clipboardAccessIsGood ? Tokens.color.good : Tokens.color.attention
        }
    }

    FormSection {
        title: "Automatic paste"

        ValueRow {
            name: "automatic-paste-access"
            label: "Access"
            value: page.settings.automaticPasteAccessDescription
            valueColor: page.settings.automaticPasteAccessGranted ? Tokens.color.good : Tokens.color.attention

            PushButton {
                objectName: "allow-automatic-paste"
                visible: !page.settings.automaticPasteAccessGranted
                title: "Allow"
                onClicked: page.settings.allowAutomaticPaste()
            }
        }
    }

    FormSection {
        title: "Excluded bundle IDs"

        TextEditor {
            id: editor

            objectName: "ignored-bundle-ids"
            width: parent.width
            height: 120
            label: "Excluded bundle IDs"
            text: page.settings.ignoredBundleIDsText
            onEdited: text => page.settings.ignoredBundleIDsText = text
            onPasteWanted: page.settings.pasteText()
            onCopyWanted: text => page.settings.copyText(text)
            onCutWanted: text => {
                if (page.settings.copyText(text))
                    insert("");
            }
        }
    }

    FormSection {
        title: "Stored data"

        ValueRow {
            name: "history-count"
            label: "History"
            value: page.settings.historyCount
        }

        ValueRow {
            name: "pinned-count"
            label: "Pinned"
            value: page.settings.pinnedCount
        }

        ValueRow {
            name: "database-size"
            label: "Database"
            value: page.settings.databaseSize
        }

        Item {
            width: parent.width
            height: buttons.height + 2 * 10

            RowDivider {}

            Row {
                id: buttons

                x: Tokens.size.formInset
                y: 10
                spacing: 8

                PushButton {
                    objectName: "clear-unpinned-history"
                    title: "Clear Unpinned History"
                    isDestructive: true
                    onClicked: page.settings.clearUnpinnedHistory()
                }

                PushButton {
                    objectName: "clear-everything"
                    title: "Clear Everything"
                    isDestructive: true
                    onClicked: page.settings.clearEverything()
                }

                PushButton {
                    objectName: "clear-system-clipboard"
                    title: "Clear System Clipboard"
                    onClicked: page.settings.clearSystemClipboard()
                }
            }
        }
    }

    Connections {
        target: page.settings

        function onTextPasted(text: string) {
            editor.insert(text);
        }
    }
}
