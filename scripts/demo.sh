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
echo "Filling the demo data home $demo ..." >&2
scripts/fill-demo-home.sh "$demo" build/release

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
  sleep 1
  QUILLMONT_HOME=$demo "$widget" --app >/dev/null 2>&1 || true
  echo "The widget is on your desktop (small and medium, top right; drag it anywhere),"
  echo "and the Quillmont window beside it (it opens again from the widget's menu)."
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
    for page in overview history reports settings; do
      QUILLMONT_HOME=$demo "$widget" --render-page "$page" "$pictures/page-$page.png" >/dev/null
    done
    echo "No display here: the desktop widget is drawn in $pictures/widget-small.png and widget-medium.png,"
    echo "the Quillmont window's pages in $pictures/page-*.png."
  fi
fi
