#!/usr/bin/env bash
# Builds Quillmont (optimised) and runs the example program.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
build/release/examples/quillmont-example
