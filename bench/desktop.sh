#!/usr/bin/env bash
# The desktop widget as a whole program, on the offscreen platform:
#   - start-up: from process start to the first painted frame (hyperfine,
#     `quillmont-widget --quit-after-first-frame`), beside `quillmont --version`;
#   - idle: CPU time used over IDLE_SECONDS (default 60) while nothing happens;
#   - memory: resident set size after start-up and after the idle period.
# Usage: bench/desktop.sh [BUILD_DIR]   (default build/release)
set -euo pipefail
cd "$(dirname "$0")/.."
. bench/idle-process.sh
build=${1:-build/release}
idle=${IDLE_SECONDS:-60}
widget=$build/desktop/quillmont-widget
home=$(mktemp -d)
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$home"' EXIT
export QUILLMONT_HOME=$home QT_QPA_PLATFORM=offscreen TZ=${TZ:-Europe/Berlin}
"$build/cli/quillmont" setup --start today --balance 3:15 --week 8h,8h,8h,8h,6h,0,0 >/dev/null 2>&1

hyperfine --warmup 3 --runs 30 -N \
  "$widget --size medium --no-tray --quit-after-first-frame" \
  "$build/cli/quillmont --version"

"$widget" --size medium --no-tray --instance bench >/dev/null 2>&1 &
pid=$!
sleep 2
report_idle "$pid" "$idle"
