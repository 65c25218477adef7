// The Quillmont Plasma widget: on the desktop the small or medium widget
// (by its size), in a panel the balance, opening the same when clicked. The
// commands run through Plasma's executable engine; QuillmontModel says which.
import QtQuick 2.15
import QtQuick.Layouts 1.15
import org.kde.plasma.plasmoid 2.0
import org.kde.plasma.core 2.0 as PlasmaCore

Item {
    id: root

    QuillmontModel {
        id: quillmont
        onRunRequested: executable.connectSource(commandLine)
    }

    PlasmaCore.DataSource {
        id: executable
        engine: "executable"
        connectedSources: []
        onNewData: {
            disconnectSource(sourceName);
            quillmont.finished(sourceName, data["exit code"], data["stdout"], data["stderr"]);
        }
    }

    Component.onCompleted: quillmont.start()

    Plasmoid.icon: "quillmont"
    Plasmoid.toolTipMainText: "Quillmont"
    Plasmoid.toolTipSubText: quillmont.tooltipText
    Plasmoid.switchWidth: PlasmaCore.Units.gridUnit * 8
    Plasmoid.switchHeight: PlasmaCore.Units.gridUnit * 6
    Plasmoid.preferredRepresentation: Plasmoid.formFactor === PlasmaCore.Types.Planar
        ? Plasmoid.fullRepresentation : Plasmoid.compactRepresentation

    Plasmoid.compactRepresentation: CompactRepresentation {
        model: quillmont
        onActivated: Plasmoid.expanded = !Plasmoid.expanded
    }
    Plasmoid.fullRepresentation: FullRepresentation {
        model: quillmont
        Layout.minimumWidth: PlasmaCore.Units.gridUnit * 9
        Layout.minimumHeight: PlasmaCore.Units.gridUnit * 8
        Layout.preferredWidth: PlasmaCore.Units.gridUnit * 19
        Layout.preferredHeight: PlasmaCore.Units.gridUnit * 9
    }
}
