#!/usr/bin/env bash
# Checks that the application layer's texts speak for every host: no string
# in app/ (tests aside) names a command-line option ("--force") or a command
# ("quillmont setup"). What a person can do about a refusal travels as a
# Remedy, and each host words it for its own controls. Journal names are
# the recorded actions, not advice, and are left alone.
# Prints every such line and exits 1 if there is any.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

found="$(find app \( -name '*.h' -o -name '*.cpp' \) ! -name '*Test.cpp' ! -path '*/testing/*' -print0 |
  xargs -0 grep -nE '"[^"]*(--[a-z]|--"|quillmont )' |
  grep -vE '^[^:]+:[0-9]+:[[:space:]]*//' |
  grep -v 'journal(' || true)"
if [ -n "$found" ]; then
  echo "texts in app/ that name the command line (a Remedy says what to do instead):"
  echo "$found"
  exit 1
fi
