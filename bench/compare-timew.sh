#!/bin/sh
# What a user's shell costs: everyday commands as whole processes, side by
# side with timewarrior, on the same ten years of work. The large-store
# generator fills a Quillmont store, and its work entries, exported, become
# a timewarrior database. Each command is started as a shell starts it (one
# posix_spawn of the program, no shell in between, no copy of either
# program made first) and the two of a pair run in turn, A B then B A and so
# on (bench/interleaved.py); the table shows the CPU medians (user +
# system), the wall medians beside them, and the ratios, Quillmont over
# timewarrior.
#
#   bench/compare-timew.sh [entries bookings schedules]
#
# Measures the release build's program, the file `cmake --install` installs
# as it is (it has no build-tree run path); QUILLMONT_PROGRAM names another
# (an installed /usr/bin/quillmont, say). Needs python3 and timewarrior
# (Debian: timewarrior); without timewarrior it says so and stops. Timings
# vary with the machine; read the ratios.
set -eu

name=compare-timew
. "$(dirname "$0")/whole-process.sh"
generate="$root/build/release/cli/quillmont_generate_store"
quillmont="${QUILLMONT_PROGRAM:-$quillmont}"
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

timew=$(command -v timew)
today=$(date +%Y-%m-%d)
ten_years_ago=$(date -d "$today -10 years +1 day" +%Y-%m-%d)

# One minute tracked again and again: `:adjust` lets each run replace the
# minute the run before tracked, as each booking adds one more.
cat >"$work/pairs" <<EOF
overview | timew | $quillmont | $timew
report week | timew summary :week | $quillmont report week | $timew summary :week
report month | timew summary :month | $quillmont report month | $timew summary :month
bookings list | timew day | $quillmont bookings list | $timew day
book -1 | timew track (one minute) :adjust | $quillmont book -1 | $timew track 2000-01-01T10:00 - 2000-01-01T10:01 bench :adjust
widget press add | timew track (one minute) :adjust | $quillmont widget press add | $timew track 2000-01-02T10:00 - 2000-01-02T10:01 bench :adjust
--version | timew --version | $quillmont --version | $timew --version
widget show --format waybar | timew | $quillmont widget show --format waybar | $timew
report of the last ten years | timew summary :all | $quillmont report --from $ten_years_ago --to $today | $timew summary :all
EOF

echo "Measuring $quillmont against $timew (${RUNS:-30} pairs each)..." >&2
python3 "$root/bench/interleaved.py" "$work/pairs"
