// The logic the GNOME Shell extension and the Plasma widget share: reading
// the widget's change feed (`quillmont widget show --format json --follow`,
// one JSON object per line), the texts and style classes they show, and the
// command lines of their actions. Plain JavaScript with no imports, so gjs
// (as a legacy module: only `var` and function declarations are exported)
// and QML (`import "quillmontFeed.js" as Feed`) load the same file.
// Everything the desktops show comes from the command line; no rule of the
// time bank is repeated here.

var MINUS = "\u2212";
var TIMER_SYMBOL = "\u25B6";
var OVERVIEW_LINK = "quillmont://overview";

// The feed's command: every drawing of the medium widget, then one more on
// every change (a booking, the timer, a new day), never by polling.
function feedCommand(program) {
    return [program || "quillmont", "widget", "show", "--format", "json", "--follow", "--size", "medium"];
}

// The same drawing once, for hosts that read a command's output only when it ends.
function showCommand(program) {
    return [program || "quillmont", "widget", "show", "--format", "json", "--size", "medium"];
}

// Seconds as the command line writes them: hours and minutes, whole minutes
// rounded half away from zero, "+" or "−" in front when signed.
function clock(seconds, signed) {
    var sign = signed ? (seconds < 0 ? MINUS : "+") : "";
    if (!isFinite(seconds))
        return sign + "\u2014";
    var minutes = Math.round(Math.abs(seconds) / 60);
    var rest = minutes % 60;
    return sign + Math.floor(minutes / 60) + ":" + (rest < 10 ? "0" : "") + rest;
}

function findText(node, accept) {
    if (!node || typeof node !== "object")
        return null;
    if (node.kind === "text" && typeof node.text === "string" && accept(node))
        return node.text;
    var children = node.children || [];
    for (var i = 0; i < children.length; ++i) {
        var found = findText(children[i], accept);
        if (found !== null)
            return found;
    }
    return null;
}

// One line of the feed as the state to show, or null when the line is not a
// drawing of the widget (an empty or cut-off line, another program's text).
// The balance and today's change are the texts the widget itself draws.
function parseLine(line) {
    var document;
    try {
        document = JSON.parse(line);
    } catch (e) {
        return null;
    }
    if (!document || typeof document !== "object" || document.kind !== "TimeBankWidget" ||
        !document.snapshot || typeof document.snapshot !== "object")
        return null;
    var snapshot = document.snapshot;
    var view = document.content && document.content.view;
    var balanceSeconds = Number(snapshot.balanceSeconds) || 0;
    var todaySeconds = (Number(snapshot.todayWorkedSeconds) || 0) - (Number(snapshot.todayExpectedSeconds) || 0);
    var balance = findText(view, function (node) {
        return node.accessibility && node.accessibility.label === "Time bank balance";
    });
    var today = findText(view, function (node) {
        return / today$/.test(node.text);
    });
    var timer = null;
    if (document.timer && typeof document.timer === "object") {
        var since = Date.parse(document.timer.runningSince);
        if (!isNaN(since))
            timer = { since: since, note: String(document.timer.note || "") };
    }
    return {
        configured: snapshot.isConfigured === true,
        balanceSeconds: balanceSeconds,
        balanceText: balance !== null ? balance : clock(balanceSeconds, true),
        todaySeconds: todaySeconds,
        todayText: today !== null ? today : clock(todaySeconds, true) + " today",
        timer: timer,
    };
}

// Splits a stream's chunks into whole lines; a line cut by the end of a
// chunk waits for the rest.
function LineBuffer() {
    this.pending = "";
}
LineBuffer.prototype.push = function (chunk) {
    this.pending += chunk;
    var lines = this.pending.split("\n");
    this.pending = lines.pop();
    return lines.filter(function (line) { return line.length > 0; });
};

// The latest drawing in a command's whole output (hosts that read it at its
// end): one document (printed once, over several lines) or the last line
// that is one (the feed).
function lastState(output) {
    var whole = parseLine(String(output || ""));
    if (whole)
        return whole;
    var lines = String(output || "").split("\n");
    for (var i = lines.length - 1; i >= 0; --i) {
        var state = parseLine(lines[i]);
        if (state)
            return state;
    }
    return null;
}

function isDebit(state) {
    return state.configured && state.balanceText.indexOf(MINUS) === 0;
}

// "credit", "debit" or "not-set-up"; the colour of the balance.
function balanceClass(state) {
    if (!state || !state.configured)
        return "not-set-up";
    return isDebit(state) ? "debit" : "credit";
}

// The timer's time so far at `now` (milliseconds since 1970).
function timerElapsedText(state, now) {
    return clock(Math.max(0, (now - state.timer.since) / 1000), false);
}

function timeOfDay(milliseconds) {
    var date = new Date(milliseconds);
    var minutes = date.getMinutes();
    return date.getHours() + ":" + (minutes < 10 ? "0" : "") + minutes;
}

// The compact text: the balance, with the timer's time so far while it runs.
function panelText(state, now) {
    if (!state)
        return "\u2026";
    if (!state.configured)
        return "Set up";
    if (state.timer)
        return state.balanceText + " " + TIMER_SYMBOL + " " + timerElapsedText(state, now);
    return state.balanceText;
}

function timerText(state, now) {
    if (!state || !state.timer)
        return "Timer not running";
    var text = "Timer running since " + timeOfDay(state.timer.since) + ", " + timerElapsedText(state, now) +
        " so far";
    return state.timer.note ? text + ": " + state.timer.note : text;
}

function tooltipText(state, now) {
    if (!state)
        return "Quillmont";
    if (!state.configured)
        return "Set up your time bank\nOpen Quillmont to begin.";
    return "Time bank " + state.balanceText + "\n" + state.todayText + "\n" + timerText(state, now);
}

// Milliseconds until the timer's time so far shows another minute (it is
// rounded to the nearest minute); -1 when no timer runs, so nothing ticks.
function millisecondsToNextMinute(state, now) {
    if (!state || !state.timer)
        return -1;
    var elapsed = Math.max(0, now - state.timer.since);
    var next = Math.floor((elapsed + 30000) / 60000) * 60000 + 30000;
    return next - elapsed + 50;
}

// The four quick-action amounts out of `quillmont settings` ("Quick actions
// 15 min, 30 min, 1 hr, 2 hrs"); none when the line is missing.
function parseQuickActions(settingsText) {
    var match = /^Quick actions\s+(.*)$/m.exec(String(settingsText || ""));
    if (!match)
        return [];
    var amounts = [];
    var parts = match[1].split(",");
    for (var i = 0; i < parts.length; ++i) {
        var part = parts[i].trim();
        var hours = /^(-?\d+) hrs?(?: (\d+) min)?$/.exec(part);
        var minutes = /^(-?\d+) min$/.exec(part);
        if (hours)
            amounts.push(Number(hours[1]) * 60 + (hours[2] ? Number(hours[2]) : 0));
        else if (minutes)
            amounts.push(Number(minutes[1]));
    }
    return amounts;
}

// How an amount of minutes is typed and shown: "+0:15", "−1:00".
function amountText(minutes) {
    return clock(minutes * 60, true);
}

function settingsCommand(program) {
    return [program || "quillmont", "settings"];
}

// The widget's own buttons: −60 and +60 minutes.
function pressCommand(add, program) {
    return [program || "quillmont", "widget", "press", add ? "add" : "subtract"];
}

// A quick-action booking in or out of the bank.
function bookCommand(minutes, program) {
    return [program || "quillmont", "book", String(minutes)];
}

function timerCommand(state, program) {
    return [program || "quillmont", "timer", state && state.timer ? "stop" : "start"];
}

function timerActionText(state) {
    return state && state.timer ? "Stop timer" : "Start timer";
}

// "Open Quillmont": the application's overview, in the running desktop
// widget when there is one.
function openCommand(widgetProgram) {
    return [widgetProgram || "quillmont-widget", "--open", OVERVIEW_LINK];
}

// Quotes a command line for hosts that run commands through a shell.
function shellLine(argv) {
    return argv.map(function (word) {
        return /^[A-Za-z0-9_\/.:=+-]+$/.test(word) ? word : "'" + word.replace(/'/g, "'\\''") + "'";
    }).join(" ");
}

// What a failed command says, for a notification: its last line of standard
// error without the program's name.
function failureText(stderr) {
    var lines = String(stderr || "").split("\n").filter(function (line) { return line.trim().length > 0; });
    if (lines.length === 0)
        return "The command failed.";
    return lines[lines.length - 1].replace(/^quillmont: /, "");
}

// For hosts that can only run a command to its end (the Plasma widget's
// executable engine): a bash line that waits for the next change, prints the
// widget drawn after it and ends, taking the feed with it. The feed's first
// line is the drawing from when it started watching.
function nextChangeShellLine(program) {
    return "bash -c " + shellLine(["exec 3< <(exec " + shellLine(feedCommand(program)) + "); feed=$!; " +
        "read -r first <&3 && read -r next <&3 && printf '%s\\n' \"$next\"; kill $feed 2>/dev/null; true"]);
}
