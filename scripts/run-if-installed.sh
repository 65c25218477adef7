#!/bin/sh
# Runs PROGRAM ARGS..., or exits 77 (CTest's "skipped") when PROGRAM is not
# installed: the desktops' runtimes (gjs, qmltestrunner, gnome-shell) come
# from scripts/install-deps.sh.
program="$1"
command -v "$program" >/dev/null 2>&1 || { echo "skipped: $program is not installed (scripts/install-deps.sh)"; exit 77; }
exec "$@"
