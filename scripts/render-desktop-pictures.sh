#!/usr/bin/env bash
# Draws the README's pictures of the desktops' integrations (docs/images) from
# a scratch data home: the GNOME Shell indicator with its menu open, from a
# headless GNOME Shell, and the Plasma widget (medium, small and the panel
# form) drawn by Plasma's own QML components under Xvfb. Needs gnome-shell,
# qmlscene, plasma-framework and xvfb (sudo apt install gnome-shell qmlscene
# plasma-framework xvfb).
# Usage: scripts/render-desktop-pictures.sh [BUILD_DIR]   (default build/default)
set -euo pipefail
cd "$(dirname "$0")/.."
build="$(cd "${1:-build/default}" && pwd)"
out="$PWD/docs/images"
mkdir -p "$out"
scripts/test-gnome-shell.sh "$build" --picture "$out/gnome-panel.png" >/dev/null

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
export QUILLMONT_HOME="$scratch/home" TZ="${TZ:-UTC}"
q() { "$build/cli/quillmont" "$@" >/dev/null 2>&1; }
q setup --start 2026-01-05 --balance 12:30 --week 8h,8h,8h,8h,6h,0,0 --quick 15,30,1h,2h
q book 45
q timer start "release notes" --force --at "$(date -d '-95 minutes' +%H:%M)"
"$build/cli/quillmont" widget show --format json --size medium >"$scratch/drawing.json"
"$build/cli/quillmont" settings >"$scratch/settings.txt"
touch "$out/plasma-widget.png"  # qmlscene wants every argument to exist
QML_XHR_ALLOW_FILE_READ=1 xvfb-run -a -s "-screen 0 1024x600x24" /usr/lib/qt5/bin/qmlscene \
  "$scratch/drawing.json" "$scratch/settings.txt" "$out/plasma-widget.png" \
  share/integrations/testing/PlasmaPicture.qml >/dev/null 2>&1
[ -s "$out/plasma-widget.png" ] || { echo "render-desktop-pictures.sh: the Plasma widget was not drawn" >&2; exit 1; }
echo "drew $out/gnome-panel.png and $out/plasma-widget.png"
