#!/usr/bin/env bash
# Builds the Debian package from a built tree, unpacks it into a scratch
# root and checks it: lintian finds no error, the AppStream metadata and the
# desktop entries validate, the programs run from where the package put
# them, and every file lies where its desktop looks for it and names what
# the package holds.
#   scripts/test-package.sh BUILD_DIR
# Exit 77 (skipped) only when a Debian packaging tool is missing.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$1"
for tool in dpkg-deb dpkg-shlibdeps fakeroot lintian appstreamcli desktop-file-validate; do
  command -v "$tool" >/dev/null || { echo "skipped: $tool is not installed (scripts/install-deps.sh)"; exit 77; }
done
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

package="$("$root/scripts/package.sh" --build-dir "$build" --output "$work" --fast)"
case "$(basename "$package")" in
  quillmont_*_"$(dpkg --print-architecture)".deb) ;;
  *) fail "the package is named $(basename "$package")" ;;
esac
dpkg-deb -f "$package" Depends | grep -q 'libc6' || fail "no dependencies computed from the programs"
dpkg-deb -f "$package" Depends | grep -q 'libqt6widgets6' || fail "the widget's Qt is not a dependency"

# lintian: no errors (warnings and notes are printed, not failed on).
lintian --fail-on error --tag-display-limit 0 "$package" >"$work/lintian.txt" 2>&1 || fail "lintian reports errors"
grep -v 'root privileges' "$work/lintian.txt" || true

tree="$work/root"
dpkg-deb -x "$package" "$tree"
usr="$tree/usr"
expected=(
  bin/quillmont bin/quillmont-widget
  share/applications/quillmont.desktop share/applications/quillmont-widget.desktop
  share/icons/hicolor/scalable/apps/quillmont.svg
  share/metainfo/io.quillmont.Quillmont.metainfo.xml
  share/man/man1/quillmont.1.gz share/man/man1/quillmont-widget.1.gz
  share/bash-completion/completions/quillmont share/zsh/vendor-completions/_quillmont
  share/fish/vendor_completions.d/quillmont.fish
  lib/systemd/user/quillmont-sync.service
  share/gnome-shell/extensions/quillmont@quillmont.io/metadata.json
  share/gnome-shell/extensions/quillmont@quillmont.io/extension.js
  share/gnome-shell/extensions/quillmont@quillmont.io/quillmontFeed.js
  share/gnome-shell/extensions/quillmont@quillmont.io/stylesheet.css
  share/plasma/plasmoids/io.quillmont.balance/metadata.json
  share/plasma/plasmoids/io.quillmont.balance/contents/ui/main.qml
  share/plasma/plasmoids/io.quillmont.balance/contents/code/quillmontFeed.js
  share/doc/quillmont/copyright share/doc/quillmont/changelog.gz
)
for file in "${expected[@]}"; do
  [ -f "$usr/$file" ] || fail "usr/$file is missing"
done
if dpkg-deb -c "$package" | grep -E '\.(h|a|cmake)$|Test'; then
  fail "development files or tests in the package"
fi

# What each file names is in the package too.
for entry in "$usr"/share/applications/*.desktop; do
  desktop-file-validate "$entry" || fail "$(basename "$entry") does not validate"
  program="$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$entry")"
  [ -x "$usr/bin/$program" ] || fail "$(basename "$entry") starts $program, which is not in usr/bin"
  icon="$(sed -n 's/^Icon=//p' "$entry")"
  [ -f "$usr/share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "$(basename "$entry") shows icon $icon, not there"
done
metainfo="$usr/share/metainfo/io.quillmont.Quillmont.metainfo.xml"
appstreamcli validate --no-net "$metainfo" || fail "the AppStream metadata does not validate"
launchable="$(sed -n 's:.*<launchable type="desktop-id">\(.*\)</launchable>.*:\1:p' "$metainfo")"
[ -f "$usr/share/applications/$launchable" ] || fail "the metadata launches $launchable, not in the package"
grep -q '<caption>' "$metainfo" || fail "screenshots without captions"
grep -q '<release version="' "$metainfo" || fail "no releases in the metadata"
unit="$usr/lib/systemd/user/quillmont-sync.service"
grep -q '^ExecStart=/usr/bin/quillmont ' "$unit" || fail "the sync unit does not start /usr/bin/quillmont"
extension="$usr/share/gnome-shell/extensions/quillmont@quillmont.io"
grep -q '"uuid": "quillmont@quillmont.io"' "$extension/metadata.json" || fail "the extension's uuid is not its folder"
grep -q '"43"' "$extension/metadata.json" || fail "the extension is not for GNOME 43"
plasmoid="$usr/share/plasma/plasmoids/io.quillmont.balance"
grep -q '"Id": "io.quillmont.balance"' "$plasmoid/metadata.json" || fail "the Plasma widget's Id is not its folder"
script="$(sed -n 's/.*"X-Plasma-MainScript": "\(.*\)".*/\1/p' "$plasmoid/metadata.json")"
[ -f "$plasmoid/contents/$script" ] || fail "the Plasma widget's main script $script is missing"
cmp -s "$extension/quillmontFeed.js" "$root/share/integrations/quillmontFeed.js" || fail "the extension's script differs"
for page in "$usr"/share/man/man1/*.gz; do
  zcat "$page" | grep -q '^\.TH' || fail "$(basename "$page") is not a manual page"
done

# The programs run from where the package put them.
export QUILLMONT_HOME="$work/home" QT_QPA_PLATFORM=offscreen
version="$("$usr/bin/quillmont" --version)" || fail "quillmont --version failed"
echo "$version" | grep -q "$(dpkg-deb -f "$package" Version)" || fail "quillmont --version says '$version'"
"$usr/bin/quillmont-widget" --render "$work/widget.png" --size medium || fail "quillmont-widget --render failed"
[ "$(head -c 8 "$work/widget.png" 2>/dev/null | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a ] ||
  fail "quillmont-widget --render wrote no PNG"

[ "$failures" -eq 0 ] || { echo "$failures check(s) failed" >&2; exit 1; }
echo "the package holds $(dpkg-deb -c "$package" | grep -c '^-') files, all in place"
