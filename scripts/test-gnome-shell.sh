#!/usr/bin/env bash
# Loads the GNOME Shell extension into a headless GNOME Shell (its own
# D-Bus buses, home and data home) from where the package puts it, and checks
# that the top bar shows the balance in its colour, then a booking and the
# timer as they happen. A small probe extension (share/integrations/testing)
# writes what the indicator shows into a file.
#   scripts/test-gnome-shell.sh BUILD_DIR [--picture FILE.png]
# With --picture it also draws the indicator, its menu open and a timer
# running, into FILE.png (the README's picture).
# Exit 77 (skipped) when gnome-shell or dbus is not installed. The quick
# amounts 15, 30, 1h and 2h give eight buttons: −60, +60, then ∓15, ∓30, ∓2h.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "$1" && pwd)"
picture=""
[ "${2:-}" = "--picture" ] && picture="$(realpath -m "$3")"
for tool in gnome-shell dbus-run-session dbus-daemon gsettings; do
  command -v "$tool" >/dev/null || { echo "skipped: $tool is not installed"; exit 77; }
done
work="$(mktemp -d)"
cleanup() {
  [ -f "$work/system-bus.pid" ] && kill "$(cat "$work/system-bus.pid")" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT

DESTDIR="$work/install" cmake --install "$build" --prefix /usr --component runtime >/dev/null
usr="$work/install/usr"
mkdir -p "$work/home/.local/share/gnome-shell/extensions" "$work/run"
chmod 700 "$work/run"
cp -r "$root/share/integrations/testing/quillmont-probe@quillmont.io" "$work/home/.local/share/gnome-shell/extensions/"
export HOME="$work/home" XDG_RUNTIME_DIR="$work/run" XDG_DATA_HOME="$work/home/.local/share"
export XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_DIRS="$usr/share:/usr/share" PATH="$usr/bin:$PATH"
export QUILLMONT_HOME="$work/quillmont" QUILLMONT_PROBE_FILE="$work/probe" QUILLMONT_PROBE_PICTURE="$picture" TZ=UTC
quillmont setup --start 2026-01-05 --balance -2:30 --week 8h,8h,8h,8h,8h,0,0 --quick 15,30,1h,2h >/dev/null 2>&1

# The Shell asks the system bus for logind; a private bus stands in for it.
dbus-daemon --session --address="unix:path=$work/run/system-bus" --fork --print-pid >"$work/system-bus.pid" 2>/dev/null
export DBUS_SYSTEM_BUS_ADDRESS="unix:path=$work/run/system-bus"

probe() {  # waits up to 30 s for the probe file to hold $1 on line $2
  for _ in $(seq 150); do
    [ "$(sed -n "${2}p" "$work/probe" 2>/dev/null)" = "$1" ] && return 0
    sleep 0.2
  done
  echo "FAIL: line $2 of what the indicator shows is not '$1':" >&2
  cat "$work/probe" >&2 2>/dev/null || echo "(nothing)" >&2
  return 1
}

dbus-run-session -- bash -c '
  set -euo pipefail
  gsettings set org.gnome.shell enabled-extensions "[\"quillmont@quillmont.io\", \"quillmont-probe@quillmont.io\"]"
  gsettings set org.gnome.shell disable-user-extensions false
  gnome-shell --headless --wayland --no-x11 --virtual-monitor 1024x768 >"'"$work"'/shell.log" 2>&1 &
  echo $! >"'"$work"'/shell.pid"
  wait
' >"$work/session.log" 2>&1 &
session=$!
status=0
{
  probe "−2:30" 1 && probe "quillmont-balance quillmont-debit" 2 && probe "+0:00 today" 3 &&
    probe "Timer not running" 4 && probe 8 5 &&
    quillmont book 3h >/dev/null 2>&1 && probe "+0:30" 1 && probe "quillmont-balance quillmont-credit" 2 &&
    quillmont timer start "release notes" >/dev/null 2>&1 && probe "+0:30 ▶ 0:00" 1 &&
    quillmont timer stop >/dev/null 2>&1 && probe "+0:30" 1
} || status=1
if [ $status -eq 0 ] && [ -n "$picture" ]; then
  quillmont book 12:45 >/dev/null 2>&1
  quillmont timer start "release notes" --force --at "$(date -d '-95 minutes' +%H:%M)" >/dev/null 2>&1
  probe "+13:15 ▶ 1:35" 1 && touch "$picture.request" || status=1
  for _ in $(seq 100); do [ -f "$picture.done" ] && break; sleep 0.2; done
  rm -f "$picture.request" "$picture.done"
  [ -s "$picture" ] || { echo "FAIL: no picture taken" >&2; status=1; }
fi
if [ $status -ne 0 ]; then
  grep -i -E 'quillmont|JS ERROR' "$work/shell.log" "$work/session.log" >&2 || true
fi
[ -f "$work/shell.pid" ] && kill "$(cat "$work/shell.pid")" 2>/dev/null || true
wait "$session" 2>/dev/null || true
[ $status -eq 0 ] && echo "GNOME Shell $(gnome-shell --version | cut -d' ' -f3) loaded the extension: the top bar shows the balance and follows changes"
exit $status
