#!/usr/bin/env bash
# Fills a fresh demo data home (never your real data) with four weeks of
# worked time, bookings, a schedule and a running timer, relative to today.
# Usage: scripts/fill-demo-home.sh DATA_HOME [BUILD_DIR]   (default build/release)
set -euo pipefail
cd "$(dirname "$0")/.."
demo=$1
build=${2:-build/release}
quillmont() { "$build/cli/quillmont" --data-home "$demo" "$@"; }
# Runs a filling step quietly, showing its messages only when it fails.
quietly() {
  local output
  output=$("$@" 2>&1) || { printf '%s\n' "$output" >&2; return 1; }
}
day() { date -d "$1 days ago" +%F; }

quietly quillmont setup --start "$(day 27)" --balance 3:15 --week 8h,8h,8h,8h,6h,0,0
quietly quillmont schedule add "$(day 13)" 7h30m,7h30m,7h30m,7h30m,6h,0,0
for ago in $(seq 27 -1 1); do
  d=$(day "$ago")
  case $(date -d "$d" +%u) in 6|7) continue ;; esac
  start=$(printf '08:%02d' $(( (ago * 7) % 50 )))
  end=$(printf '%02d:%02d' $(( 16 + ago % 3 )) $(( (ago * 13) % 60 )))
  quietly quillmont work add --start "$d $start" --end "$d $end" --break 45 --note "demo day"
done
quietly quillmont book -1h --category appointment --note "dentist (demo)" --day "$(day 9)"
quietly quillmont book -45m --category longLunch --note "team lunch (demo)" --day "$(day 4)"
quietly quillmont book 8h --category holiday --note "public holiday (demo)" --day "$(day 16)"
quietly quillmont book 1:30 --note "evening release (demo)" --day "$(day 2)"
quietly quillmont timer start
