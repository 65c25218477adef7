// For the headless GNOME Shell test only: writes the Quillmont indicator's
// text, style classes and menu lines into $QUILLMONT_PROBE_FILE whenever
// they change, so the test can see what the top bar shows. When
// $QUILLMONT_PROBE_PICTURE names a file and "<file>.request" appears, it
// opens the indicator's menu and takes a picture of it with the top bar.
'use strict';

const { Gio, GLib, Shell } = imports.gi;
const Main = imports.ui.main;

class Probe {
    enable() {
        const file = GLib.getenv('QUILLMONT_PROBE_FILE');
        let last = '';
        this._source = GLib.timeout_add(GLib.PRIORITY_DEFAULT, 200, () => {
            const indicator = Main.panel.statusArea['quillmont@quillmont.io'];
            const seen = indicator
                ? [indicator._label.text, indicator._label.style_class, indicator._today.label.text,
                    indicator._timer.label.text, indicator._amountBox.get_n_children()].join('\n')
                : 'no indicator';
            if (seen !== last) {
                last = seen;
                GLib.file_set_contents(file, `${seen}\n`);
            }
            const picture = GLib.getenv('QUILLMONT_PROBE_PICTURE');
            if (indicator && picture && !this._shooting && GLib.file_test(`${picture}.request`, GLib.FileTest.EXISTS)) {
                this._shooting = true;
                indicator.menu.open(false);
                GLib.timeout_add(GLib.PRIORITY_DEFAULT, 1000, () => {
                    this._takePicture(indicator, picture);
                    return GLib.SOURCE_REMOVE;
                });
            }
            return GLib.SOURCE_CONTINUE;
        });
    }

    _takePicture(indicator, picture) {
        const [menuX, menuY] = indicator.menu.actor.get_transformed_position();
        const [menuWidth, menuHeight] = indicator.menu.actor.get_transformed_size();
        const [buttonX] = indicator.get_transformed_position();
        const [buttonWidth] = indicator.get_transformed_size();
        const left = Math.max(0, Math.min(menuX, buttonX) - 8);
        const right = Math.max(menuX + menuWidth, buttonX + buttonWidth) + 8;
        const stream = Gio.File.new_for_path(picture).replace(null, false, Gio.FileCreateFlags.NONE, null);
        const shooter = new Shell.Screenshot();
        shooter.screenshot_area(left, 0, Math.round(right - left), Math.round(menuY + menuHeight + 16), stream,
            (source, result) => {
                shooter.screenshot_area_finish(result);
                stream.close(null);
                GLib.file_set_contents(`${picture}.done`, '');
            });
    }

    disable() {
        GLib.source_remove(this._source);
    }
}

function init() {
    return new Probe();
}
