// The panel form: the balance (and the timer's time so far), in the
// theme's positive or negative colour.
import QtQuick 2.15
import org.kde.plasma.core 2.0 as PlasmaCore
import org.kde.plasma.components 3.0 as PlasmaComponents3

MouseArea {
    id: compact
    property QtObject model
    signal activated()

    implicitWidth: label.implicitWidth + PlasmaCore.Units.smallSpacing * 2
    implicitHeight: label.implicitHeight
    hoverEnabled: true
    onClicked: activated()

    PlasmaComponents3.Label {
        id: label
        anchors.centerIn: parent
        text: compact.model.balanceText
        font.italic: compact.model.balanceClass === "not-set-up"
        color: compact.model.balanceClass === "debit" ? PlasmaCore.Theme.negativeTextColor
            : compact.model.balanceClass === "credit" ? PlasmaCore.Theme.positiveTextColor
            : PlasmaCore.Theme.textColor
    }
}
