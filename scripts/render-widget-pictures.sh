#!/usr/bin/env bash
# Draws the pictures of the widget that the README shows (docs/images), from
# scratch data homes: the small and medium widget with a positive balance, the
# medium one in the dark palette, a negative balance, and the set-up state.
# Usage: scripts/render-widget-pictures.sh [BUILD_DIR]   (default build/release)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
out=docs/images
mkdir -p "$out"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export TZ=${TZ:-Europe/Berlin} QT_QPA_PLATFORM=offscreen
quillmont() { QUILLMONT_HOME="$scratch/$1" "$build/cli/quillmont" "${@:2}" >/dev/null 2>&1; }
widget() { QUILLMONT_HOME="$scratch/$1" "$build/desktop/quillmont-widget" --render "$out/$2.png" "${@:3}" --scale 2; }

quillmont positive setup --start today --balance 12:30 --week 8h,8h,8h,8h,6h,0,0
quillmont positive book 45 --note "stayed for the release"
widget positive widget-small --size small
widget positive widget-medium --size medium
widget positive widget-medium-dark --size medium --dark

quillmont negative setup --start today --balance -3:15 --week 8h,8h,8h,8h,6h,0,0
quillmont negative book -1h --category appointment
widget negative widget-negative --size medium

widget empty widget-setup --size small
