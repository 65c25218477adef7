// The widget on the desktop (and the panel form's popup). Narrow, it is the
// small widget: the balance with − and +. Wider, the medium one adds today's
// change, the timer with its start or stop, the quick-action amounts and
// "Open Quillmont". A click on the balance opens the Quillmont window.
import QtQuick 2.15
import QtQuick.Layouts 1.15
import org.kde.plasma.core 2.0 as PlasmaCore
import org.kde.plasma.components 3.0 as PlasmaComponents3
import org.kde.plasma.extras 2.0 as PlasmaExtras

Item {
    id: full
    property QtObject model
    readonly property bool medium: width >= PlasmaCore.Units.gridUnit * 15

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: PlasmaCore.Units.smallSpacing * 2
        spacing: PlasmaCore.Units.smallSpacing

        RowLayout {
            PlasmaCore.IconItem {
                source: "quillmont"
                Layout.preferredWidth: PlasmaCore.Units.iconSizes.small
                Layout.preferredHeight: PlasmaCore.Units.iconSizes.small
            }
            PlasmaComponents3.Label {
                text: "Quillmont"
                font.weight: Font.DemiBold
                Layout.fillWidth: true
            }
        }

        PlasmaExtras.Heading {
            id: balance
            Layout.fillWidth: true
            text: full.model.configured ? full.model.state.balanceText : "Set up your time bank"
            level: 4
            font.pixelSize: full.model.configured ? PlasmaCore.Units.gridUnit * 2.4 : PlasmaCore.Theme.defaultFont.pixelSize * 1.2
            font.weight: Font.DemiBold
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 10
            color: full.model.balanceClass === "debit" ? PlasmaCore.Theme.negativeTextColor
                : full.model.balanceClass === "credit" ? PlasmaCore.Theme.positiveTextColor
                : PlasmaCore.Theme.textColor
            MouseArea {
                anchors.fill: parent
                onClicked: full.model.openQuillmont()
            }
        }

        PlasmaComponents3.Label {
            visible: !full.model.configured
            text: "Open Quillmont to begin."
            opacity: 0.7
        }

        PlasmaComponents3.Label {
            visible: full.medium && full.model.configured
            text: full.model.todayText + " \u00B7 " + full.model.timerText
            opacity: 0.7
            elide: Text.ElideRight
            Layout.fillWidth: true
        }

        RowLayout {
            visible: full.medium && full.model.configured
            spacing: PlasmaCore.Units.smallSpacing
            PlasmaComponents3.ToolButton {
                icon.name: full.model.timerRunning ? "media-playback-stop" : "media-playback-start"
                text: full.model.timerActionText
                onClicked: full.model.toggleTimer()
            }
            PlasmaComponents3.ToolButton {
                icon.name: "window-new"
                text: "Open Quillmont"
                onClicked: full.model.openQuillmont()
            }
        }

        Item { Layout.fillHeight: true }

        RowLayout {
            visible: full.model.configured
            spacing: PlasmaCore.Units.smallSpacing
            PlasmaComponents3.Button {
                text: full.model.amountText(-60)
                onClicked: full.model.press(false)
            }
            PlasmaComponents3.Button {
                text: full.model.amountText(60)
                onClicked: full.model.press(true)
            }
            Repeater {
                model: full.medium ? full.model.quickActions.filter(function (m) { return m !== 60; }) : []
                delegate: PlasmaComponents3.Button {
                    text: full.model.amountText(modelData)
                    onClicked: full.model.book(modelData)
                }
            }
        }

        PlasmaComponents3.Label {
            visible: full.model.failure !== ""
            text: full.model.failure
            color: PlasmaCore.Theme.negativeTextColor
            wrapMode: Text.WordWrap
            Layout.fillWidth: true
        }
    }
}
