#!/bin/sh
# Whole-process comparison of everyday commands with timewarrior, on the same
# ten years of work: the large-store generator fills a Quillmont store, and
# its work entries, exported, become a timewarrior database. Each pair runs
# in turn, A B then B A and so on (bench/interleaved.py), so a machine whose
# speed drifts during the run favours neither; the table shows the median CPU
# time (user + system) and the ratio, Quillmont over timewarrior.
#
#   bench/compare-timew.sh [entries bookings schedules]
#
# Needs the release build (cmake --preset release && cmake --build --preset
# release), python3 and timewarrior (Debian: timewarrior); without
# timewarrior it says so and stops. Timings vary with the machine; read the ratios.
set -eu

name=compare-timew
. "$(dirname "$0")/whole-process.sh"
generate="$root/build/release/cli/quillmont_generate_store"
require_tools timew python3
require_programs "$quillmont" "$generate"

export TZ="${TZ:-Europe/Berlin}" QUILLMONT_HOME="$work/quillmont" TIMEWARRIORDB="$work/timewarrior" NO_COLOR=1
mkdir -p "$QUILLMONT_HOME" "$TIMEWARRIORDB/data"
: >"$TIMEWARRIORDB/timewarrior.cfg"

echo "Filling both stores..." >&2
"$generate" "$@" >&2
"$quillmont" >/dev/null
"$quillmont" export "$work/archive.json" >&2
python3 - "$work/archive.json" "$TIMEWARRIORDB/data" <<'EOF'
import json, sys, time, collections
archive, folder = sys.argv[1], sys.argv[2]
months = collections.defaultdict(list)
stamp = lambda seconds: time.strftime("%Y%m%dT%H%M%SZ", time.gmtime(seconds))
for entry in json.load(open(archive))["workEntries"]:
    start, end = entry["startedAt"], entry.get("endedAt")
    if end is None or end <= start:
        continue
    months[time.strftime("%Y-%m", time.gmtime(start))].append(f"inc {stamp(start)} - {stamp(end)} # work\n")
for month, lines in months.items():
    with open(f"{folder}/{month}.data", "w") as data:
        data.writelines(sorted(lines))
EOF
timew >/dev/null 2>&1 || true

# Both programs run from copies made now: how recently a program's file was
# written or read into the page cache moved a ratio by up to a tenth here
# (a fresh copy of the same binary against one copied twenty minutes before).
mkdir -p "$work/bin"
cp "$quillmont" "$work/bin/quillmont"
cp "$(command -v timew)" "$work/bin/timew"
quillmont="$work/bin/quillmont"
timew="$work/bin/timew"

compare() {
  python3 "$root/bench/interleaved.py" "$1" "$2" "$3" || printf '%-34s failed: %s | %s\n' "$1" "$2" "$3"
}

printf '%-34s %11s %11s %7s\n' "command" "quillmont" "timew" "ratio"
compare "start-up (--version)" "$quillmont --version" "$timew --version"
compare "overview / timew" "$quillmont" "$timew"
compare "book -1 / track :adjust" "$quillmont book -1" "$timew track 2000-01-01T10:00 - 2000-01-01T10:01 bench :adjust"
compare "widget press add / track :adjust" "$quillmont widget press add" "$timew track 2000-01-02T10:00 - 2000-01-02T10:01 bench :adjust"
# Each stop comes a second and a little after its start: timewarrior keeps
# whole seconds, and a stop in the second of the start fails without
# writing anything, which would compare a full start and stop with a start
# alone. Every step of both must succeed.
PAUSE=1.1 compare "timer start + stop / start + stop" "$quillmont timer start ; $quillmont timer stop" \
  "$timew start bench ; $timew stop"
compare "bookings list / day" "$quillmont bookings list" "$timew day"
compare "report week / summary :week" "$quillmont report week" "$timew summary :week"
compare "report month / summary :month" "$quillmont report month" "$timew summary :month"
compare "report of ten years / summary :all" "$quillmont report --from 2016-11-01 --to 2026-12-31" "$timew summary :all"
