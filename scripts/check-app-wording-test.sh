#!/usr/bin/env bash
# Shows that check-app-wording.sh catches a text in app/ that names an
# option or a command: on a copy of app/, the clean tree passes, and each
# planted refusal makes it fail with exit status 1 and name the file.
set -euo pipefail
source_dir="$(cd "${1:-$(dirname "$0")/..}" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

copy() {
  rm -rf "$work/tree"
  mkdir -p "$work/tree"
  cp -r "$source_dir/app" "$work/tree/"
}

copy
"$source_dir/scripts/check-app-wording.sh" "$work/tree" >/dev/null || {
  echo "the clean tree was refused"
  exit 1
}

for planted in 'throw Refusal("add --force to keep it");' 'throw Refusal("run `quillmont sync setup DIR` first");'; do
  copy
  printf '%s\n' "$planted" >>"$work/tree/app/work/Timer.cpp"
  set +e
  output="$("$source_dir/scripts/check-app-wording.sh" "$work/tree")"
  status=$?
  set -e
  if [ "$status" -ne 1 ] || [[ "$output" != *"app/work/Timer.cpp"* ]]; then
    echo "a planted text was not refused (status $status): $planted"
    exit 1
  fi
done
# Comments, tests and journal names may mention the command line.
copy
printf '// the command line adds --force\n' >>"$work/tree/app/work/Timer.cpp"
printf 'const char* t = "--force";\n' >>"$work/tree/app/work/TimerTest.cpp"
"$source_dir/scripts/check-app-wording.sh" "$work/tree" >/dev/null || {
  echo "a comment or a test was refused"
  exit 1
}
echo "ok"
