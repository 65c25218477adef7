// Tests of the desktops' shared logic under gjs, the runtime of the GNOME
// Shell extension: first on hand-made lines, then on what the real program
// prints, so a change of the feed's format shows here.
//   gjs quillmontFeedTest.js <folder of quillmontFeed.js> [<quillmont program> [<extension.js>]]
const { Gio, GLib } = imports.gi;

imports.searchPath.unshift(ARGV[0]);
const Feed = imports.quillmontFeed;
const program = ARGV[1];
const extensionScript = ARGV[2];

let failures = 0;
let current = '';
function expectEqual(actual, expected, what) {
    const a = JSON.stringify(actual), e = JSON.stringify(expected);
    if (a !== e) {
        failures++;
        printerr(`FAIL ${current}: ${what}\n  expected ${e}\n  actual   ${a}`);
    }
}
function test(name, body) {
    current = name;
    try {
        body();
    } catch (error) {
        failures++;
        printerr(`FAIL ${name}: threw ${error}\n${error.stack}`);
    }
}

function drawing({ configured = true, balance = 9000, worked = 0, expected = 0, balanceText = '+2:30',
    todayText = '+0:00 today', timer = null }) {
    const document = {
        kind: 'TimeBankWidget', family: 'medium',
        snapshot: { balanceSeconds: balance, todayWorkedSeconds: worked, todayExpectedSeconds: expected,
            isConfigured: configured },
        content: { url: 'quillmont://overview', view: { kind: 'column', children: [
            { kind: 'text', text: 'Quillmont' },
            { kind: 'text', text: balanceText, accessibility: { label: 'Time bank balance' } },
            { kind: 'row', children: [{ kind: 'text', text: todayText }, { kind: 'button', title: 'Add 60 minutes' }] },
        ] } },
    };
    if (timer)
        document.timer = timer;
    return JSON.stringify(document);
}

test('clock writes hours and minutes as the command line does', () => {
    expectEqual(Feed.clock(9000, true), '+2:30', 'credit');
    expectEqual(Feed.clock(-2700, true), '\u22120:45', 'debit, with a real minus sign');
    expectEqual(Feed.clock(0, true), '+0:00', 'zero is signed +');
    expectEqual(Feed.clock(89, false), '0:01', '89 s round to one minute');
    expectEqual(Feed.clock(-29, true), '\u22120:00', 'sign of the seconds, not of the minutes');
    expectEqual(Feed.clock(90, false), '0:02', 'halves round away from zero');
    expectEqual(Feed.clock(3600 * 125, true), '+125:00', 'hours are not wrapped into days');
    expectEqual(Feed.clock(NaN, true), '+\u2014', 'no number shows a dash');
});

test('a drawing gives the widget\'s own texts and the credit or debit class', () => {
    const credit = Feed.parseLine(drawing({ worked: 1800, expected: 600, todayText: '+0:20 today' }));
    expectEqual(credit.balanceText, '+2:30', 'balance text');
    expectEqual(credit.todayText, '+0:20 today', 'today');
    expectEqual(credit.todaySeconds, 1200, 'today is credits less debits');
    expectEqual(Feed.balanceClass(credit), 'credit', 'class');
    expectEqual(Feed.panelText(credit, 0), '+2:30', 'panel without timer');

    const debit = Feed.parseLine(drawing({ balance: -15300, balanceText: '\u22124:15' }));
    expectEqual(Feed.balanceClass(debit), 'debit', 'a minus balance is a debit');
    // A balance under half a minute below zero is drawn "−0:00": still a debit.
    const barely = Feed.parseLine(drawing({ balance: -20, balanceText: '\u22120:00' }));
    expectEqual(Feed.balanceClass(barely), 'debit', 'the drawn sign decides');

    const notSetUp = Feed.parseLine(drawing({ configured: false }));
    expectEqual(Feed.balanceClass(notSetUp), 'not-set-up', 'not set up');
    expectEqual(Feed.panelText(notSetUp, 0), 'Set up', 'panel before set-up');
    expectEqual(Feed.tooltipText(notSetUp, 0), 'Set up your time bank\nOpen Quillmont to begin.', 'tooltip');
    expectEqual(Feed.panelText(null, 0), '\u2026', 'nothing read yet');
});

test('a small drawing without texts falls back to the snapshot\'s figures', () => {
    const line = JSON.stringify({ kind: 'TimeBankWidget', snapshot: { balanceSeconds: -2700,
        todayWorkedSeconds: 0, todayExpectedSeconds: 2700, isConfigured: true }, content: {} });
    const state = Feed.parseLine(line);
    expectEqual([state.balanceText, state.todayText], ['\u22120:45', '\u22120:45 today'], 'texts');
});

test('lines that are not drawings are passed over', () => {
    for (const line of ['', '{', 'quillmont: something failed', '[]', 'null', '{"kind":"Other","snapshot":{}}',
        '{"kind":"TimeBankWidget"}', '{"kind":"TimeBankWidget","snapshot":3}'])
        expectEqual(Feed.parseLine(line), null, `line ${line}`);
    expectEqual(Feed.lastState('garbage\n' + drawing({}) + '\n{"kind":"TimeBankWidget"\n').balanceText, '+2:30',
        'the last whole drawing of an output');
    expectEqual(Feed.lastState(''), null, 'empty output');
});

test('a line cut between reads waits for its end', () => {
    const buffer = new Feed.LineBuffer();
    const line = drawing({});
    expectEqual(buffer.push(line.slice(0, 20)), [], 'half a line');
    expectEqual(buffer.push(line.slice(20) + '\n' + line.slice(0, 5)).length, 1, 'the end and the next start');
    expectEqual(buffer.push(line.slice(5) + '\n\n'), [line], 'empty lines are dropped');
});

test('a running timer shows its time so far and ticks once a minute', () => {
    const since = Date.parse('2026-03-02T08:00:00Z');
    const state = Feed.parseLine(drawing({ timer: { runningSince: '2026-03-02T09:00:00+01:00', note: 'notes' } }));
    expectEqual(state.timer.since, since, 'the offset is honoured');
    const now = since + (90 * 60 + 10) * 1000;
    expectEqual(Feed.panelText(state, now), '+2:30 \u25B6 1:30', 'panel');
    const start = new Date(since);
    const at = `${start.getHours()}:${String(start.getMinutes()).padStart(2, '0')}`;
    expectEqual(Feed.timerText(state, now), `Timer running since ${at}, 1:30 so far: notes`, 'menu');
    expectEqual(Feed.timerActionText(state), 'Stop timer', 'action');
    expectEqual(Feed.timerCommand(state), ['quillmont', 'timer', 'stop'], 'stops');
    // 1:30:10 shows 1:30 until 1:30:30, when it rounds to 1:31.
    expectEqual(Feed.millisecondsToNextMinute(state, now), 20050, 'next minute');
    expectEqual(Feed.millisecondsToNextMinute(state, since), 30050, 'first minute');
    expectEqual(Feed.panelText(state, since - 5000), '+2:30 \u25B6 0:00', 'a start ahead of the clock');

    const idle = Feed.parseLine(drawing({}));
    expectEqual(Feed.millisecondsToNextMinute(idle, now), -1, 'no timer, no tick');
    expectEqual(Feed.timerText(idle, now), 'Timer not running', 'idle text');
    expectEqual(Feed.timerCommand(idle), ['quillmont', 'timer', 'start'], 'starts');
    expectEqual(Feed.parseLine(drawing({ timer: { runningSince: 'soon' } })).timer, null, 'an unreadable start');
});

test('quick actions are read from the settings and booked both ways', () => {
    const settings = 'Set-up              complete\nQuick actions       15 min, 30 min, 1 hr, 2 hr 30 min\n' +
        'Offered kinds       Appointment\n';
    expectEqual(Feed.parseQuickActions(settings), [15, 30, 60, 150], 'amounts');
    expectEqual(Feed.parseQuickActions('Quick actions  2 hrs, soon, 45 min'), [120, 45], 'unknown parts skipped');
    expectEqual(Feed.parseQuickActions('quillmont: the store is locked'), [], 'no settings');
    expectEqual(Feed.amountText(-15), '\u22120:15', 'shown');
    expectEqual(Feed.bookCommand(-15), ['quillmont', 'book', '-15'], 'debit');
    expectEqual(Feed.pressCommand(true), ['quillmont', 'widget', 'press', 'add'], '+60');
    expectEqual(Feed.pressCommand(false, '/opt/q'), ['/opt/q', 'widget', 'press', 'subtract'], '-60');
    expectEqual(Feed.openCommand(), ['quillmont-widget', '--open', 'quillmont://overview'], 'open');
    expectEqual(Feed.failureText('quillmont: Set up your time bank first.\n'), 'Set up your time bank first.',
        'failure');
    expectEqual(Feed.shellLine(['a b', "it's", '-15']), "'a b' 'it'\\''s' -15", 'quoting');
});

// ---- against the real program ----

function run(argv, env) {
    const launcher = new Gio.SubprocessLauncher({
        flags: Gio.SubprocessFlags.STDOUT_PIPE | Gio.SubprocessFlags.STDERR_PIPE });
    for (const [name, value] of Object.entries(env))
        launcher.setenv(name, value, true);
    const process = launcher.spawnv(argv);
    const [, out, err] = process.communicate_utf8(null, null);
    return { status: process.get_exit_status(), out, err };
}

function shell(line, env) {
    return run(['sh', '-c', line], env);
}

if (program) {
    const home = GLib.dir_make_tmp('quillmont-feed-XXXXXX');
    const env = { QUILLMONT_HOME: home, TZ: 'UTC' };
    const q = (...args) => run([program, ...args], env);

    test('the real feed before and after set-up', () => {
        const before = Feed.lastState(q(...Feed.showCommand().slice(1)).out);
        expectEqual(Feed.balanceClass(before), 'not-set-up', 'before set-up');
        expectEqual(q('setup', '--start', '2026-01-05', '--balance', '1:00', '--week', '8h,8h,8h,8h,8h,0,0',
            '--quick', '15,30,1h,2h').status, 0, 'setup');
        expectEqual(q(...Feed.bookCommand(-105).slice(1)).status, 0, 'quick debit');
        const after = Feed.lastState(q(...Feed.showCommand().slice(1)).out);
        expectEqual([after.balanceText, after.todayText, Feed.balanceClass(after)],
            ['\u22120:45', '\u22121:45 today', 'debit'], 'texts');
        expectEqual(Feed.parseQuickActions(q(...Feed.settingsCommand().slice(1)).out), [15, 30, 60, 120],
            'quick actions');
        expectEqual(q(...Feed.pressCommand(true).slice(1)).status, 0, 'press');
        expectEqual(Feed.lastState(q(...Feed.showCommand().slice(1)).out).balanceText, '+0:15', 'pressed');
    });

    test('the real feed wakes on the timer and the next-change line ends with it', () => {
        const marker = `${home}/waited`;
        // The waiter runs in the background until the timer starts.
        const waiter = new Gio.Subprocess({ argv: ['sh', '-c',
            `export QUILLMONT_HOME='${home}' TZ=UTC; ` +
            `${Feed.nextChangeShellLine(program)} > '${marker}.part' && mv '${marker}.part' '${marker}'`],
        flags: Gio.SubprocessFlags.NONE });
        waiter.init(null);
        GLib.usleep(700000);
        expectEqual(GLib.file_test(marker, GLib.FileTest.EXISTS), false, 'nothing changed yet');
        expectEqual(q(...Feed.timerCommand(null).slice(1), 'release notes').status, 0, 'timer start');
        waiter.wait(null);
        const [, bytes] = GLib.file_get_contents(marker);
        const state = Feed.lastState(new TextDecoder().decode(bytes));
        expectEqual(state !== null && state.timer !== null, true, 'the drawing after the change has the timer');
        expectEqual(state && state.timer.note, 'release notes', 'its note');
        expectEqual(q(...Feed.timerCommand(state).slice(1)).status, 0, 'timer stop');
        expectEqual(Feed.lastState(q(...Feed.showCommand().slice(1)).out).timer, null, 'stopped');
    });
    shell(`rm -rf '${home}'`, {});
}

if (extensionScript) {
    test('the extension\'s script compiles', () => {
        const [, bytes] = GLib.file_get_contents(extensionScript);
        // Compiled, not run: the Shell's own modules exist only inside it.
        const compiled = new Function(new TextDecoder().decode(bytes));
        expectEqual(typeof compiled, 'function', 'compiled');
    });
}

if (failures > 0) {
    printerr(`${failures} failure(s)`);
    imports.system.exit(1);
}
print('all passed');
