#!/usr/bin/env bash
# Runs Quillmont in a throw-away X desktop session and takes screenshots of
# what a person sees there: a window manager (openbox), a panel with a system
# tray (tint2), a notification service (dunst), the widget, the tray icon,
# the forgotten-timer notification, the four pages of the window reached by
# their shortcuts, and the work entry's edit dialog. Nothing touches your
# own data: the demo data home is made fresh in a scratch folder.
#
#   scripts/look-desktop.sh [OUT_DIR] [BUILD_DIR]   (default /tmp/quillmont-look, build/default)
#
# Needs xvfb, dbus, openbox, tint2, dunst, xdotool and imagemagick
# (apt install xvfb dbus openbox tint2 dunst xdotool imagemagick).
set -euo pipefail
cd "$(dirname "$0")/.."
out=$(realpath -m "${1:-/tmp/quillmont-look}")
build=$(realpath "${2:-build/default}")

if [[ "${QUILLMONT_LOOK_INSIDE:-}" != 1 ]]; then
  missing=()
  for tool in xvfb-run dbus-run-session openbox tint2 dunst xdotool import; do
    command -v "$tool" >/dev/null || missing+=("$tool")
  done
  if ((${#missing[@]})); then
    echo "look-desktop: missing ${missing[*]} (apt install xvfb dbus openbox tint2 dunst xdotool imagemagick)" >&2
    exit 1
  fi
  mkdir -p "$out"
  export QUILLMONT_LOOK_INSIDE=1
  exec dbus-run-session -- xvfb-run -a -s "-screen 0 1280x800x24" "$0" "$out" "$build"
fi

scratch=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$scratch"' EXIT
export QUILLMONT_HOME="$scratch/home" XDG_CONFIG_HOME="$scratch/config" TZ="${TZ:-Europe/Berlin}"
scripts/fill-demo-home.sh "$QUILLMONT_HOME" "$build"
# A timer that has run for eleven hours, so that the notification shows.
"$build/cli/quillmont" timer cancel >/dev/null 2>&1
"$build/cli/quillmont" timer start --at "$(date -d '-11 hours' '+%Y-%m-%d %H:%M')" --force "long day" >/dev/null 2>&1

shot() { sleep "${2:-1}"; import -window root "$out/$1.png"; echo "  $out/$1.png"; }
openbox >/dev/null 2>&1 &
sleep 1
tint2 >/dev/null 2>&1 &
dunst >/dev/null 2>&1 &
sleep 1
"$build/desktop/quillmont-widget" --size medium >"$out/widget.log" 2>&1 &
sleep 3
"$build/desktop/quillmont-widget" --app >"$out/window.log" 2>&1 &
echo "Screenshots:"
shot session 4
for page in 1 2 3 4; do
  xdotool key "ctrl+$page"
  shot "page-$page"
done
xdotool key ctrl+2
window=$(xdotool getactivewindow)
xdotool mousemove --window "$window" 300 120 click 1 key Down Return
shot edit-dialog
xdotool key Escape
