#!/usr/bin/env bash
# Builds the Debian package quillmont_<version>_<arch>.deb: the programs, their
# launchers and icon, the AppStream metadata, the manual pages, the
# completions, the systemd user unit, the GNOME Shell extension and the Plasma
# widget (the "runtime" install component), with its dependencies computed
# from the programs by dpkg-shlibdeps.
#
#   scripts/package.sh [--build-dir DIR] [--output DIR] [--fast]
#
# Without --build-dir it builds an optimised tree of its own (build/package)
# with Debian's hardening flags; with it, it packages that tree as it is built.
# The package goes to --output (default build/) and its path is printed.
# --fast compresses it lightly (for tests).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build=""
output="$root/build"
compression=(-Zxz)
while [ $# -gt 0 ]; do
  case "$1" in
    --build-dir) build="$2"; shift 2 ;;
    --output) output="$2"; shift 2 ;;
    --fast) compression=(-Zgzip -z1); shift ;;
    -h|--help) sed -n '2,13p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    *) echo "package.sh: unknown argument $1 (see --help)" >&2; exit 2 ;;
  esac
done

for tool in dpkg-deb dpkg-shlibdeps fakeroot; do
  if ! command -v "$tool" >/dev/null; then
    "$root/scripts/install-deps.sh"
    break
  fi
done

if [ -z "$build" ]; then
  export DEB_BUILD_MAINT_OPTIONS="hardening=+all"  # also bind now
  "$root/scripts/install-deps.sh"
  build="$root/build/package"
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DQUILLMONT_BUILD_TESTS=OFF -DQUILLMONT_BUILD_BENCHMARKS=OFF \
    -DCMAKE_CXX_FLAGS="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)" \
    -DCMAKE_EXE_LINKER_FLAGS="$(dpkg-buildflags --get LDFLAGS)" >/dev/null
  cmake --build "$build"
fi
build="$(cd "$build" && pwd)"
mkdir -p "$output"
output="$(cd "$output" && pwd)"

version="$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")"
arch="$(dpkg --print-architecture)"
stage="$(mktemp -d)"
trap 'rm -rf "$stage"' EXIT
tree="$stage/tree"

DESTDIR="$tree" cmake --install "$build" --prefix /usr --component runtime >/dev/null
for program in quillmont quillmont-widget; do
  [ -x "$tree/usr/bin/$program" ] || { echo "package.sh: $build has no $program built" >&2; exit 1; }
  strip --strip-unneeded --remove-section=.comment --remove-section=.note "$tree/usr/bin/$program"
done
gzip -9n "$tree"/usr/share/man/man1/*.1
doc="$tree/usr/share/doc/quillmont"
mkdir -p "$doc"
cp "$root/share/debian/copyright" "$doc/copyright"
gzip -9n <"$root/share/debian/changelog" >"$doc/changelog.gz"
find "$tree" -type d -exec chmod 0755 {} +
find "$tree" -type f -exec chmod 0644 {} +
chmod 0755 "$tree"/usr/bin/*

# Dependencies of the programs, as dpkg-shlibdeps finds them.
mkdir -p "$stage/debian"
printf 'Source: quillmont\n\nPackage: quillmont\nArchitecture: any\n' >"$stage/debian/control"
depends="$(cd "$stage" && dpkg-shlibdeps -O -e"$tree/usr/bin/quillmont" -e"$tree/usr/bin/quillmont-widget" 2>/dev/null |
  sed -n 's/^shlibs:Depends=//p')"
[ -n "$depends" ] || { echo "package.sh: dpkg-shlibdeps found no dependencies" >&2; exit 1; }

mkdir -p "$tree/DEBIAN"
size="$(du -k -s --exclude=DEBIAN "$tree" | cut -f1)"
sed -e "s|@VERSION@|$version|" -e "s|@ARCH@|$arch|" -e "s|@SIZE@|$size|" -e "s|@DEPENDS@|$depends|" \
  "$root/share/debian/control.in" >"$tree/DEBIAN/control"
(cd "$tree" && find usr -type f -print0 | sort -z | xargs -0 md5sum) >"$tree/DEBIAN/md5sums"
chmod 0644 "$tree/DEBIAN/control" "$tree/DEBIAN/md5sums"

package="$output/quillmont_${version}_${arch}.deb"
fakeroot dpkg-deb "${compression[@]}" --build "$tree" "$package" >/dev/null
echo "$package"
