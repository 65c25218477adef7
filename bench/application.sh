#!/usr/bin/env bash
# The Quillmont window as a whole program, on the offscreen platform, on ten
# years of history (the large-store generator):
#   - start-up: from process start to the Time bank page painted (hyperfine,
#     `quillmont-widget --app --no-tray --quit-after-first-frame`), beside
#     `quillmont --version`;
#   - Activity: every record of ten years read and painted after the switch,
#     and one page of the list scrolled and painted (bench_application);
#   - a link opened in the running window (hyperfine, `--open URL`);
#   - memory and idle: resident set size with the window open, and CPU time
#     used over IDLE_SECONDS (default 60) while nothing happens.
# Usage: bench/application.sh [BUILD_DIR]   (default build/release)
set -euo pipefail
cd "$(dirname "$0")/.."
. bench/idle-process.sh
build=${1:-build/release}
idle=${IDLE_SECONDS:-60}
widget=$build/desktop/quillmont-widget
for program in "$widget" "$build/cli/quillmont" "$build/cli/quillmont_generate_store" "$build/bench/bench_application"; do
  [ -x "$program" ] || { echo "missing $program: build the $build preset first" >&2; exit 1; }
done
command -v hyperfine >/dev/null || { echo "needs hyperfine (Debian: hyperfine)" >&2; exit 1; }
home=$(mktemp -d)
pid=
trap '[ -n "$pid" ] && kill "$pid" 2>/dev/null; rm -rf "$home"' EXIT
export QUILLMONT_HOME=$home QT_QPA_PLATFORM=offscreen TZ=${TZ:-Europe/Berlin}
echo "Filling ten years..." >&2
"$build/cli/quillmont_generate_store" >&2
"$build/cli/quillmont" >/dev/null

hyperfine --warmup 3 --runs 20 -N \
  "$widget --app --no-tray --quit-after-first-frame" \
  "$build/cli/quillmont --version"

"$build/bench/bench_application"

"$widget" --app --no-tray >/dev/null 2>&1 &
pid=$!
sleep 3
# A link to the running window (the widget's click, the tray, the desktop's
# handler): the sending process, to the page switched in the running one.
hyperfine --warmup 2 --runs 15 -N "$widget --open quillmont://history" "$widget --open quillmont://overview"
report_idle "$pid" "$idle"
