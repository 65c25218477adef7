# Shared by the whole-process benchmark scripts (sourced, not run): the
# release build's programs, the tools a script needs, and a scratch folder.
#
#   name=...; . "$(dirname "$0")/whole-process.sh"
#   require_tools hyperfine python3     # stops the script (status 0) when one is missing
#   require_programs "$quillmont" ...   # stops it (status 1) when the release build is missing

root=$(cd "$(dirname "$0")/.." && pwd)
quillmont="$root/build/release/cli/quillmont"

require_tools() {
  for tool in "$@"; do
    if ! command -v "$tool" >/dev/null 2>&1; then
      echo "$name: $tool is not installed; skipping (Debian: apt install $tool)" >&2
      exit 0
    fi
  done
}

require_programs() {
  for program in "$@"; do
    if [ ! -x "$program" ]; then
      echo "$name: build the release preset first (cmake --preset release && cmake --build --preset release)" >&2
      exit 1
    fi
  done
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
