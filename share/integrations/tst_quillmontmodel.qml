// Tests of the Plasma widget's model under qmltestrunner (Plasma itself is
// not needed): which command lines it asks its host to run, and what it
// shows from their output.
import QtQuick 2.15
import QtTest 1.2
import "../plasma/plasmoids/io.quillmont.balance/contents/ui"

TestCase {
    id: testCase
    name: "QuillmontModel"

    property var asked: []

    Component {
        id: modelComponent
        QuillmontModel {
            program: "/usr/bin/quillmont"
            retryMilliseconds: 50
            onRunRequested: testCase.asked.push(commandLine)
        }
    }

    function drawing(balanceText, configured, timer) {
        var document = {
            kind: "TimeBankWidget",
            snapshot: { balanceSeconds: balanceText.charAt(0) === "\u2212" ? -2700 : 9000, todayWorkedSeconds: 900,
                        todayExpectedSeconds: 0, isConfigured: configured },
            content: { view: { kind: "column", children: [
                { kind: "text", text: balanceText, accessibility: { label: "Time bank balance" } },
                { kind: "text", text: "+0:15 today" } ] } }
        };
        if (timer)
            document.timer = timer;
        return JSON.stringify(document) + "\n";
    }

    function fresh() {
        asked = [];
        return createTemporaryObject(modelComponent, testCase);
    }

    function askedWith(text) {
        return asked.filter(function (line) { return line.indexOf(text) >= 0; });
    }

    function test_startsTheWaiterReadsTheWidgetAndTheQuickActions() {
        var model = fresh();
        model.start();
        compare(asked.length, 3);
        compare(askedWith("--follow").length, 1, "one waiter");
        verify(askedWith("--follow")[0].indexOf("bash -c ") === 0, "the waiter is a bash line");
        compare(askedWith("/usr/bin/quillmont widget show --format json --size medium #").length, 1, "one read");
        compare(askedWith("/usr/bin/quillmont settings #").length, 1, "the settings");
        compare(model.balanceText, "\u2026", "nothing shown before the first answer");
    }

    function test_showsTheBalanceTodayAndColourOfWhatWasRead() {
        var model = fresh();
        model.start();
        var show = askedWith("--size medium #")[0];
        model.finished(show, 0, drawing("+2:30", true), "");
        compare(model.balanceText, "+2:30");
        compare(model.balanceClass, "credit");
        compare(model.todayText, "+0:15 today");
        compare(model.timerText, "Timer not running");
        compare(model.timerActionText, "Start timer");
        verify(!model.tick.running, "nothing ticks without a timer");

        model.finished(askedWith("settings #")[0], 0, "Quick actions       15 min, 30 min, 1 hr, 2 hrs\n", "");
        compare(model.quickActions, [15, 30, 60, 120]);
    }

    function test_eachChangeShowsItsDrawingAndStartsTheNextWaiter() {
        var model = fresh();
        model.start();
        var waiter = askedWith("--follow")[0];
        asked = [];
        var since = new Date(Date.now() - 90 * 60000).toISOString();
        model.finished(waiter, 0, drawing("\u22120:45", true, { runningSince: since, note: "notes" }), "");
        compare(model.balanceClass, "debit");
        compare(model.balanceText, "\u22120:45 \u25B6 1:30");
        compare(model.timerActionText, "Stop timer");
        verify(model.tick.running, "the timer's minute ticks");
        compare(askedWith("--follow").length, 1, "the next waiter");
        verify(askedWith("--follow")[0] !== waiter, "a command line of its own");
        compare(askedWith("--size medium #").length, 1, "and what is there now");

        model.toggleTimer();
        compare(askedWith("/usr/bin/quillmont timer stop #").length, 1);
    }

    function test_aWaiterThatBringsNothingIsTriedAgainLaterNotAtOnce() {
        var model = fresh();
        model.start();
        var waiter = askedWith("--follow")[0];
        asked = [];
        model.finished(waiter, 0, "", "bash: quillmont: command not found\n");
        compare(asked.length, 0, "no waiter at once: that would spin");
        wait(200);
        compare(askedWith("--follow").length, 1, "tried again after the pause");
    }

    function test_actionsRunTheCommandLineAndSayWhatFailed() {
        var model = fresh();
        model.press(true);
        model.press(true);
        var presses = askedWith("/usr/bin/quillmont widget press add #");
        compare(presses.length, 2, "two presses are two commands");
        verify(presses[0] !== presses[1]);
        model.press(false);
        compare(askedWith("widget press subtract #").length, 1);
        model.book(-15);
        compare(askedWith("/usr/bin/quillmont book -15 #").length, 1);
        model.openQuillmont();
        compare(askedWith("quillmont-widget --open quillmont://overview #").length, 1);

        model.finished(presses[0], 1, "", "quillmont: Set up your time bank first.\n");
        compare(model.failure, "Set up your time bank first.");
        model.finished(presses[1], 0, "", "Booked +1:00\n");
        compare(model.failure, "", "the next success clears it");
        compare(model.amountText(-60), "\u22121:00");
    }

    function test_beforeSetUpItAsksToSetUp() {
        var model = fresh();
        model.start();
        model.finished(askedWith("--size medium #")[0], 0, drawing("+0:00", false), "");
        verify(!model.configured);
        compare(model.balanceClass, "not-set-up");
        compare(model.balanceText, "Set up");
        compare(model.todayText, "Set up your time bank");
    }
}
