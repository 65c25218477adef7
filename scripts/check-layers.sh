#!/usr/bin/env bash
# Checks that dependencies point one way: each folder below may include only
# the folders listed for it (tests are free to include what they exercise).
# Prints every include that crosses a layer the wrong way and exits 1 if any.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

declare -A allowed=(
  [platform]="platform"
  [core/ledger]="platform core/ledger"
  [core/persistence]="platform core/ledger core/persistence"
  [core/engine]="platform core/ledger core/persistence core/engine"
  [core/widgetstate]="platform core/ledger core/persistence core/engine core/widgetstate"
  [core/reports]="platform core/ledger core/persistence core/engine core/reports"
  [core/archive]="platform core/ledger core/persistence core/engine core/archive"
  [core/sync]="platform core/ledger core/persistence core/engine core/archive core/sync"
  [widget]="platform core widget"
  [app]="platform core widget app"
  [desktop]="platform core widget app desktop"
  [cli]="platform core widget app cli"
)

status=0
for layer in "${!allowed[@]}"; do
  [ -d "$layer" ] || continue
  while IFS= read -r -d '' file; do
    while IFS= read -r included; do
      ok=0
      for target in ${allowed[$layer]}; do
        [[ "$included" == "$target"/* ]] && ok=1 && break
      done
      if [ $ok -eq 0 ]; then
        echo "$file includes \"$included\", which $layer may not depend on"
        status=1
      fi
    done < <(sed -n 's/^#include "\(\(platform\|core\|widget\|app\|desktop\|cli\)\/[^"]*\)".*/\1/p' "$file")
  done < <(find "$layer" \( -name '*.h' -o -name '*.cpp' \) ! -name '*Test.cpp' ! -path '*/testing/*' -print0)
done
exit $status
