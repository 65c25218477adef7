#!/usr/bin/env bash
# Draws the four pages of the Quillmont window that the README shows
# (docs/images/page-*.png) from a fresh demo data home, offscreen, at twice
# the scale. Usage: scripts/render-pages.sh [BUILD_DIR]   (default build/release)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
out=docs/images
mkdir -p "$out"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export TZ=${TZ:-Europe/Berlin} QT_QPA_PLATFORM=offscreen
scripts/fill-demo-home.sh "$scratch/demo" "$build"
for page in overview history reports settings; do
  QUILLMONT_HOME="$scratch/demo" "$build/desktop/quillmont-widget" --render-page "$page" "$out/page-$page.png" \
    --size 900x640 --scale 2
done
