// For the headless GNOME Shell test only: writes the Quillmont indicator's
// text, style classes and menu lines into $QUILLMONT_PROBE_FILE whenever
// they change, so the test can see what the top bar shows.
'use strict';

const { GLib } = imports.gi;
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
            return GLib.SOURCE_CONTINUE;
        });
    }

    disable() {
        GLib.source_remove(this._source);
    }
}

function init() {
    return new Probe();
}
