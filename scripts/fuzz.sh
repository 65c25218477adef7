#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz/, clang with ASan + UBSan) and runs each
# for SECONDS seconds (default 5) on a working copy of its seeds
# (fuzz/corpus/<target>/), printing the executions and coverage reached.
#   scripts/fuzz.sh            # 5 s per target: the smoke run CI does
#   scripts/fuzz.sh 600        # ten minutes per target
#   scripts/fuzz.sh 60 archive # one target
# A crash stops the run with the input saved in build/fuzz/findings/.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
seconds=${1:-5}
only=${2:-}
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
for source in fuzz/*Fuzz.cpp; do
  name=$(basename "$source" Fuzz.cpp | tr '[:upper:]' '[:lower:]')
  [ -n "$only" ] && [ "$only" != "$name" ] && continue
  work=build/fuzz/corpus/$name
  findings=build/fuzz/findings/$name
  mkdir -p "$work" "$findings"
  cp -n fuzz/corpus/"$name"/* "$work"/ 2>/dev/null || true
  echo "== fuzz_$name for ${seconds}s"
  build/fuzz/fuzz/fuzz_"$name" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$findings/" \
    "$work" > "build/fuzz/$name.log" 2>&1 || true
  grep -E "ERROR|SUMMARY" "build/fuzz/$name.log" || true
  # The last status line holds the coverage (cov: edges, ft: features, corp: inputs kept).
  grep -E "cov: " "build/fuzz/$name.log" | tail -1 | sed -E 's/^#([0-9]+)[[:space:]]+[A-Z]+[[:space:]]+/  \1 runs, /'
  grep -E "^stat::number_of_executed_units" "build/fuzz/$name.log" | sed 's/^stat::number_of_executed_units: /  executions: /' || true
  # libFuzzer leaves crash-* files behind when it finds something.
  if compgen -G "$findings/crash-*" >/dev/null || compgen -G "$findings/leak-*" >/dev/null || \
     compgen -G "$findings/timeout-*" >/dev/null; then
    echo "fuzz_$name found a failing input: $(ls "$findings")" >&2
    exit 1
  fi
done
