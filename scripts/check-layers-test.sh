#!/usr/bin/env bash
# Shows that check-layers.sh catches an include that crosses a layer the
# wrong way: on a copy of the sources, the clean tree passes, and each
# planted include (the application layer on the command line, the desktop
# on the command line) makes it fail with exit status 1 and name the file.
set -euo pipefail
source_dir="$(cd "${1:-$(dirname "$0")/..}" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

copy() {
  rm -rf "$work/tree"
  mkdir -p "$work/tree"
  for layer in platform core widget app cli desktop; do
    [ -d "$source_dir/$layer" ] && cp -r "$source_dir/$layer" "$work/tree/"
  done
  return 0
}

expect_failure() {
  local planted="$1"
  copy
  printf '#include "cli/output/Terminal.h"\n' >>"$work/tree/$planted"
  set +e
  output="$("$source_dir/scripts/check-layers.sh" "$work/tree")"
  status=$?
  set -e
  if [ "$status" -ne 1 ] || [[ "$output" != *"$planted includes \"cli/output/Terminal.h\""* ]]; then
    echo "a cli include planted in $planted was not refused (status $status): $output"
    exit 1
  fi
}

copy
"$source_dir/scripts/check-layers.sh" "$work/tree" || { echo "the clean tree was refused"; exit 1; }
expect_failure "$(cd "$source_dir" && find app -name '*.cpp' ! -name '*Test.cpp' ! -path '*/testing/*' | sort | head -n 1)"
expect_failure "$(cd "$source_dir" && find desktop -name '*.cpp' ! -name '*Test.cpp' ! -path '*/testing/*' | sort | head -n 1)"
echo "check-layers refuses planted cli includes in app/ and desktop/"
