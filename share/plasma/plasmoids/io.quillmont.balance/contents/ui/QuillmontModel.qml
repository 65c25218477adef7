// What the Plasma widget shows and runs, apart from Plasma itself: the host
// runs the command lines this asks for (runRequested) and hands back each
// one's output (finished). Changes come from a waiter that ends at the next
// change of the bank (no polling); after each one the widget is read again
// and the next waiter started.
import QtQuick 2.15
import "../code/quillmontFeed.js" as Feed

QtObject {
    id: model

    property string program: "quillmont"
    property string widgetProgram: "quillmont-widget"
    // A waiter that brought nothing (the program missing or failing) is tried again after this long.
    property int retryMilliseconds: 10000

    property var state: null
    property var quickActions: []
    property string failure: ""
    property double now: Date.now()

    readonly property bool configured: state !== null && state.configured
    readonly property string balanceText: Feed.panelText(state, now)
    readonly property string balanceClass: Feed.balanceClass(state)
    readonly property string todayText: configured ? state.todayText : "Set up your time bank"
    readonly property string timerText: Feed.timerText(state, now)
    readonly property string timerActionText: Feed.timerActionText(state)
    readonly property bool timerRunning: state !== null && state.timer !== null
    readonly property string tooltipText: Feed.tooltipText(state, now)

    signal runRequested(string commandLine)

    property int serial: 0
    property var pending: ({})

    // Every command line carries a serial number as a shell comment, so two
    // presses of one button are two commands.
    function run(argvOrLine, role) {
        serial += 1;
        var line = (typeof argvOrLine === "string" ? argvOrLine : Feed.shellLine(argvOrLine)) + " #" + serial;
        pending[line] = role;
        runRequested(line);
        return line;
    }

    function start() {
        run(Feed.nextChangeShellLine(program), "wait");
        run(Feed.showCommand(program), "show");
        readQuickActions();
    }

    function readQuickActions() {
        run(Feed.settingsCommand(program), "settings");
    }

    function finished(line, exitCode, stdout, stderr) {
        var role = pending[line];
        delete pending[line];
        var shown = Feed.lastState(stdout);
        if (role === "wait") {
            if (shown) {
                state = shown;
                start();
            } else {
                retry.restart();
            }
        } else if (role === "show") {
            if (shown)
                state = shown;
        } else if (role === "settings") {
            if (exitCode === 0)
                quickActions = Feed.parseQuickActions(stdout);
        } else if (role === "action") {
            failure = exitCode === 0 ? "" : Feed.failureText(stderr);
        }
    }

    function press(add) { run(Feed.pressCommand(add, program), "action"); }
    function book(minutes) { run(Feed.bookCommand(minutes, program), "action"); }
    function toggleTimer() { run(Feed.timerCommand(state, program), "action"); }
    function openQuillmont() { run(Feed.openCommand(widgetProgram), "action"); }
    function amountText(minutes) { return Feed.amountText(minutes); }

    // The waiter's retry, and the timer's minute: nothing ticks while no timer runs.
    property Timer retry: Timer {
        interval: model.retryMilliseconds
        onTriggered: model.start()
    }
    property Timer tick: Timer {
        interval: Math.max(1, Feed.millisecondsToNextMinute(model.state, model.now))
        running: model.timerRunning
        onTriggered: {
            model.now = Date.now();
            if (model.timerRunning)
                restart();
        }
    }
    onStateChanged: now = Date.now()
}
