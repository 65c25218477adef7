#!/usr/bin/env bash
# Builds Quillmont and runs every test. `--sanitize` runs them under ASan + UBSan.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
preset=default
[ "${1:-}" = "--sanitize" ] && preset=sanitize
cmake --workflow --preset "$preset"
# Sync end to end through two real Syncthing instances (skipped without syncthing).
if [ "$preset" = default ]; then
  scripts/test-syncthing.sh build/default/cli/quillmont
fi
