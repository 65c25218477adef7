// The Quillmont panel indicator: the balance in the top bar, coloured for
// credit or debit, and a menu with today's change, the timer, −60 / +60, the
// quick-action amounts and the Quillmont window. It learns of every change
// from the command line's follow feed (no polling) and acts through the
// command line; what it shows and runs comes from quillmontFeed.js.
'use strict';

const { Clutter, Gio, GLib, GObject, St } = imports.gi;
const Main = imports.ui.main;
const PanelMenu = imports.ui.panelMenu;
const PopupMenu = imports.ui.popupMenu;
const Me = imports.misc.extensionUtils.getCurrentExtension();
const Feed = Me.imports.quillmontFeed;

// A feed that ended (the program missing, updated or killed) is started
// again after this long; a running feed is never replaced.
const RESTART_SECONDS = 10;

const Indicator = GObject.registerClass(
class QuillmontIndicator extends PanelMenu.Button {
    _init() {
        super._init(0.0, 'Quillmont');
        this._state = null;
        this._quickActions = [];
        this._label = new St.Label({
            text: Feed.panelText(null, Date.now()),
            y_align: Clutter.ActorAlign.CENTER,
            style_class: 'quillmont-balance',
        });
        this.add_child(this._label);

        this._today = new PopupMenu.PopupMenuItem('', { reactive: false });
        this._timer = new PopupMenu.PopupMenuItem('', { reactive: false });
        this.menu.addMenuItem(this._today);
        this.menu.addMenuItem(this._timer);
        this._timerAction = new PopupMenu.PopupMenuItem(Feed.timerActionText(null));
        this._timerAction.connect('activate', () => this._run(Feed.timerCommand(this._state)));
        this.menu.addMenuItem(this._timerAction);
        this.menu.addMenuItem(new PopupMenu.PopupSeparatorMenuItem());
        this._amounts = new PopupMenu.PopupBaseMenuItem({ reactive: false });
        this._amountBox = new St.BoxLayout({ style_class: 'quillmont-amounts', x_expand: true });
        this._amounts.add_child(this._amountBox);
        this.menu.addMenuItem(this._amounts);
        this.menu.addMenuItem(new PopupMenu.PopupSeparatorMenuItem());
        const open = new PopupMenu.PopupMenuItem('Open Quillmont');
        open.connect('activate', () => this._run(Feed.openCommand()));
        this.menu.addMenuItem(open);
        this._showAmounts();
        this._show();
        // The quick amounts are settings, not figures of the feed: read them
        // whenever the menu opens.
        this.menu.connect('open-state-changed', (menu, open) => {
            if (open)
                this._readQuickActions();
        });

        this._cancellable = new Gio.Cancellable();
        this._startFeed();
        this._readQuickActions();
    }

    _amountButton(label, run) {
        const button = new St.Button({ label, style_class: 'button', can_focus: true, x_expand: true });
        button.connect('clicked', () => {
            this.menu.close();
            this._run(run);
        });
        return button;
    }

    // −60 and +60 (the widget's own buttons), then each quick amount both ways.
    _showAmounts() {
        this._amountBox.destroy_all_children();
        this._amountBox.add_child(this._amountButton(Feed.amountText(-60), Feed.pressCommand(false)));
        this._amountBox.add_child(this._amountButton(Feed.amountText(60), Feed.pressCommand(true)));
        for (const minutes of this._quickActions.filter(m => m !== 60)) {
            this._amountBox.add_child(this._amountButton(Feed.amountText(-minutes), Feed.bookCommand(-minutes)));
            this._amountBox.add_child(this._amountButton(Feed.amountText(minutes), Feed.bookCommand(minutes)));
        }
    }

    _show() {
        const now = Date.now();
        const state = this._state;
        this._label.text = Feed.panelText(state, now);
        this._label.style_class = `quillmont-balance quillmont-${Feed.balanceClass(state)}`;
        this._today.label.text = state && state.configured ? state.todayText : 'Set up your time bank';
        this._timer.label.text = Feed.timerText(state, now);
        this._timerAction.label.text = Feed.timerActionText(state);
        this._timerAction.visible = !!(state && state.configured);
        this._amounts.visible = !!(state && state.configured);
        this._scheduleTick(now);
    }

    // While the timer runs, its time so far changes once a minute.
    _scheduleTick(now) {
        if (this._tick) {
            GLib.source_remove(this._tick);
            this._tick = 0;
        }
        const wait = Feed.millisecondsToNextMinute(this._state, now);
        if (wait < 0)
            return;
        this._tick = GLib.timeout_add(GLib.PRIORITY_DEFAULT, wait, () => {
            this._tick = 0;
            this._show();
            return GLib.SOURCE_REMOVE;
        });
    }

    _startFeed() {
        this._restart = 0;
        try {
            this._feed = Gio.Subprocess.new(Feed.feedCommand(),
                Gio.SubprocessFlags.STDOUT_PIPE | Gio.SubprocessFlags.STDERR_SILENCE);
        } catch (error) {
            this._feedEnded();
            return;
        }
        this._feed.wait_async(this._cancellable, () => this._feedEnded());
        this._lines = new Gio.DataInputStream({ base_stream: this._feed.get_stdout_pipe() });
        this._readLine();
    }

    _readLine() {
        this._lines.read_line_async(GLib.PRIORITY_DEFAULT, this._cancellable, (stream, result) => {
            let line;
            try {
                [line] = stream.read_line_finish_utf8(result);
            } catch (error) {
                return;  // cancelled, or the feed went away
            }
            if (line === null)
                return;
            const state = Feed.parseLine(line);
            if (state) {
                this._state = state;
                this._show();
            }
            this._readLine();
        });
    }

    _feedEnded() {
        if (this._cancellable.is_cancelled() || this._restart)
            return;
        this._state = null;
        this._show();
        this._restart = GLib.timeout_add_seconds(GLib.PRIORITY_DEFAULT, RESTART_SECONDS, () => {
            this._startFeed();
            return GLib.SOURCE_REMOVE;
        });
    }

    _readQuickActions() {
        this._run(Feed.settingsCommand(), out => {
            this._quickActions = Feed.parseQuickActions(out);
            this._showAmounts();
        }, true);
    }

    // Runs a command line; what fails is said in a notification.
    _run(argv, done, quiet) {
        let process;
        try {
            process = Gio.Subprocess.new(argv, Gio.SubprocessFlags.STDOUT_PIPE | Gio.SubprocessFlags.STDERR_PIPE);
        } catch (error) {
            if (!quiet)
                Main.notifyError('Quillmont', error.message);
            return;
        }
        process.communicate_utf8_async(null, this._cancellable, (p, result) => {
            let out, err;
            try {
                [, out, err] = p.communicate_utf8_finish(result);
            } catch (error) {
                return;
            }
            if (p.get_successful()) {
                if (done)
                    done(out);
            } else if (!quiet) {
                Main.notifyError('Quillmont', Feed.failureText(err));
            }
        });
    }

    destroy() {
        this._cancellable.cancel();
        if (this._feed)
            this._feed.force_exit();
        for (const source of [this._tick, this._restart]) {
            if (source)
                GLib.source_remove(source);
        }
        this._tick = this._restart = 0;
        super.destroy();
    }
});

class Extension {
    enable() {
        this._indicator = new Indicator();
        Main.panel.addToStatusArea(Me.metadata.uuid, this._indicator);
    }

    disable() {
        this._indicator.destroy();
        this._indicator = null;
    }
}

function init() {
    return new Extension();
}
