// Draws the Plasma widget's desktop form (FullRepresentation) and its panel
// form with Plasma's own components but without a Plasma shell, from a
// drawing of the widget saved by `quillmont widget show --format json`, and
// saves the picture:
//   QML_XHR_ALLOW_FILE_READ=1 qmlscene DRAWING.json SETTINGS.txt OUT.png PlasmaPicture.qml
import QtQuick 2.15
import QtQuick.Layouts 1.15
import org.kde.plasma.core 2.0 as PlasmaCore
import "../../plasma/plasmoids/io.quillmont.balance/contents/ui"

Rectangle {
    id: scene
    width: 760
    height: 350
    color: "#2c3e50"

    readonly property var files: Qt.application.arguments.slice(-4, -1)

    function read(path, done) {
        var request = new XMLHttpRequest();
        request.onreadystatechange = function () {
            if (request.readyState === XMLHttpRequest.DONE)
                done(request.responseText);
        };
        request.open("GET", "file://" + path);
        request.send();
    }

    QuillmontModel { id: model }

    Rectangle {
        x: 24; y: 24
        width: 440; height: 230
        radius: 8
        color: PlasmaCore.Theme.backgroundColor
        FullRepresentation { anchors.fill: parent; model: model }
    }
    Rectangle {
        x: 500; y: 24
        width: 220; height: 150
        radius: 8
        color: PlasmaCore.Theme.backgroundColor
        FullRepresentation { anchors.fill: parent; model: model }
    }
    Rectangle {
        x: 0; y: scene.height - 40
        width: scene.width; height: 40
        color: PlasmaCore.Theme.backgroundColor
        CompactRepresentation {
            anchors.right: parent.right
            anchors.rightMargin: 60
            anchors.verticalCenter: parent.verticalCenter
            model: model
        }
    }

    Component.onCompleted: {
        read(scene.files[0], function (drawing) {
            model.pending["show"] = "show";
            model.finished("show", 0, drawing, "");
            read(scene.files[1], function (settings) {
                model.pending["settings"] = "settings";
                model.finished("settings", 0, settings, "");
                grabTimer.start();
            });
        });
    }
    Timer {
        id: grabTimer
        interval: 1500
        onTriggered: scene.grabToImage(function (result) {
            result.saveToFile(scene.files[2]);
            Qt.quit();
        })
    }
}
