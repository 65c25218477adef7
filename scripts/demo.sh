#!/usr/bin/env bash
# The main job: builds Quillmont (optimised) and runs `quillmont` on a demo
# data home (build/demo-home, never your real data) filled with four weeks
# of worked time, bookings and a schedule; then shows the overview, the
# month report and the widget: on the desktop (small and medium) when there
# is a display, else as PNG pictures and in the terminal. Run it again to
# start the demo afresh.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
demo=$PWD/build/demo-home
rm -rf "$demo"
quillmont() { build/release/cli/quillmont --data-home "$demo" "$@"; }
# Runs a filling step quietly, showing its messages only when it fails.
quietly() {
  local output
  output=$("$@" 2>&1) || { printf '%s\n' "$output" >&2; return 1; }
}
day() { date -d "$1 days ago" +%F; }

echo "Filling the demo data home $demo ..." >&2
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

echo
quillmont overview
echo
quillmont report month
echo
widget=build/release/desktop/quillmont-widget
if [ -x "$widget" ] && { [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; }; then
  for size in small medium; do
    QUILLMONT_HOME=$demo setsid "$widget" --size "$size" --instance "demo-$size" --no-tray >/dev/null 2>&1 &
  done
  echo "The widget is on your desktop (small and medium, top right; drag it anywhere)."
  echo "Right-click it for its menu (Quit closes it); it keeps showing the demo data home."
else
  echo "The widget, as the desktop shows it (quillmont widget show):"
  quillmont widget show
  if [ -x "$widget" ]; then
    pictures=$PWD/build/demo-pictures
    mkdir -p "$pictures"
    for size in small medium; do
      QUILLMONT_HOME=$demo "$widget" --render "$pictures/widget-$size.png" --size "$size" --scale 2 >/dev/null
    done
    echo "No display here: the desktop widget is drawn in $pictures/widget-small.png and widget-medium.png."
  fi
fi
