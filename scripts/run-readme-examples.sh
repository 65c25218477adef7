#!/usr/bin/env bash
# Runs every command of the README's "Everyday use" examples, in order, on a
# scratch data home, with `quillmont` standing for the program given. Fails
# on the first example that does not succeed.
set -euo pipefail
program=$1
readme=$(realpath "$2")
program=$(realpath "$program")
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export QUILLMONT_HOME=$home NO_COLOR=1
work=$(mktemp -d)
trap 'rm -rf "$home" "$work"' EXIT
cd "$work"
# Files the examples name, as a reader would have them.
cp "$(dirname "$readme")/share/examples/holidays.ics" "$work/"

# Lines inside ```sh blocks of the section, joined where they end in "\".
examples=$(awk '
  /^## Everyday use/ { inside = 1; next }
  /^## / && inside { inside = 0 }
  inside && /^```sh/ { block = 1; next }
  inside && /^```/ { block = 0; next }
  inside && block && !/^#/ && NF { print }
' "$readme" | sed -e ':a' -e '/\\$/N; s/\\\n//; ta')

[ -n "$examples" ] || { echo "no examples found in $readme" >&2; exit 1; }
count=0
quillmont() { "$program" "$@"; }
while IFS= read -r line; do
  echo "\$ $line"
  if ! eval "$line" >/dev/null; then
    echo "README example failed: $line" >&2
    exit 1
  fi
  count=$((count + 1))
done <<< "$examples"
echo "$count README examples ran"
