#!/usr/bin/env bash
# Installs the Debian 12 packages Quillmont builds on, when any is missing.
set -euo pipefail
packages=(
  cmake ninja-build g++ pkg-config
  libicu-dev libsqlite3-dev rapidjson-dev uuid-dev libcli11-dev libical-dev
  libsimdjson-dev  # only the archive benchmark, as its yardstick
  googletest libgtest-dev libgmock-dev librapidcheck-dev libbenchmark-dev
  clang libclang-rt-14-dev
  qt6-base-dev fonts-dejavu-core xvfb xauth
  syncthing curl
  zsh fish
  # the desktops' integrations and the Debian package, and their tests
  gjs qtdeclarative5-dev-tools qml-module-qttest qml-module-qtquick2
  gnome-shell dbus-daemon libglib2.0-bin
  dpkg-dev fakeroot binutils lintian appstream desktop-file-utils
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing missing packages: ${missing[*]}" >&2
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
$sudo apt-get update -q
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
