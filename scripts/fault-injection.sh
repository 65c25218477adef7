#!/usr/bin/env bash
# Makes the disk refuse each write, sync, truncation and rename of an
# operation in turn, once and from then on, and checks after every run that
# the store is sound, holds the whole change or none of it, that the exit
# status says which (0: whole, anything else: none), that the next command
# works and that every file and folder made is the user's alone.
#
# usage: fault-injection.sh QUILLMONT FAULT_SHIM [OPERATION...]
# The operations are the lines of the table below; without names, all run.
# Exits 77 when every operation asked for was skipped (a command this build
# lacks).
set -uo pipefail
program=$(realpath "$1")
shim=$(realpath "$2")
shift 2
only=("$@")

# operation | command run in home "a" ("$run" is the scenario's folder)
operations=(
  "book|book 45 --note refused"
  "import|import \$run/incoming.json"
  "widget-press|widget press add"
  "sync|sync"
  "settle|settle --from 2025-01-01 --through 2025-01-31"
)

work=$(mktemp -d "${TMPDIR:-/tmp}/quillmont-faults-XXXXXX")
trap 'rm -rf "$work"' EXIT
run=$work/run  # every scenario runs here: the sync folder's path is stored
umask 000      # what the programs make must be private whatever the umask
export TZ=UTC LC_ALL=C.UTF-8 NO_COLOR=1 QUILLMONT_ENTITLEMENTS=$work/entitlements.json
unset QUILLMONT_FAULT_AT QUILLMONT_FAULT_ALWAYS QUILLMONT_FAULT_COUNT
printf '%s' '{"com.apple.developer.team-identifier": "TESTS",
  "com.apple.security.application-groups": ["group.io.quillmont.ledger"]}' > "$work/entitlements.json"

# quillmont in home $1 of the scenario.
q() {
  local home=$1
  shift
  QUILLMONT_HOME=$run/$home "$program" "$@"
}

# An archive of $1 bookings and $2 work entries, identifiers from $3 on,
# modified at $4 (seconds since 1970).
archive() {
  local bookings=$1 entries=$2 first=$3 modified=$4 i separator=""
  printf '{"schemaVersion": 1, "exportedAt": %s, "settings": [], "schedules": [],\n"balanceAdjustments": [' "$modified"
  for ((i = 0; i < bookings; i++)); do
    printf '%s\n{"id": "00000000-0000-4000-8000-%012d", "date": %d, "createdAt": %d, "modifiedAt": %d, ' \
      "$separator" $((first + i)) $((1735718400 + i * 86400)) "$modified" "$modified"
    printf '"minutes": %d, "kind": "manual", "note": "booking %d"}' $((i % 7 * 15 - 45)) $((first + i))
    separator=","
  done
  printf '],\n"workEntries": ['
  separator=""
  for ((i = 0; i < entries; i++)); do
    printf '%s\n{"id": "00000000-0000-4000-9000-%012d", "startedAt": %d, "endedAt": %d, "breakMinutes": 30, ' \
      "$separator" $((first + i)) $((1735722000 + i * 86400)) $((1735722000 + i * 86400 + 8 * 3600))
    printf '"createdAt": %d, "modifiedAt": %d, "note": "work %d"}' "$modified" "$modified" $((first + i))
    separator=","
  done
  printf ']}\n'
}

# Home "a" holds a set-up ledger of a few hundred records; each operation's
# scenario adds what it needs. Built once per operation into $work/<name>.
prepare() {
  local name=$1
  rm -rf "$run"
  mkdir -p "$run"
  archive 300 200 0 1750000000 > "$run/ledger.json"
  q a setup --start 2025-01-01 --balance 0 --week 8h,8h,8h,8h,6h,0,0 > /dev/null 2>&1 &&
    q a import "$run/ledger.json" > /dev/null || return 1
  case $name in
    import)
      # 40 new bookings and 20 new work entries, and newer copies of 30 of each.
      archive 70 50 270 1760000000 > "$run/incoming.json"
      ;;
    sync)
      # Machine b starts from the same ledger, changes it and publishes
      # that; the operation is machine a's next exchange.
      cp -a "$run/a" "$run/b"
      q a sync setup "$run/folder" --name a > /dev/null &&
        q b sync setup "$run/folder" --name b > /dev/null &&
        q b book 90 --note "from b" > /dev/null 2>&1 &&
        q b bookings delete 00000000 > /dev/null 2>&1
      q b sync > /dev/null || return 1
      ;;
  esac
  rm -rf "${work:?}/$name"
  cp -a "$run" "$work/$name"
}

# The ledger as sorted lines, without identifiers and instants (a booking's
# identifier and time differ from run to run), read without faults.
ledger() {
  q a export - 2> /dev/null | grep -v -E '"(id|createdAt|modifiedAt|exportedAt|date)"' | sort
}

failures=0
tested=0
report() {
  echo "  FAIL $1" >&2
  failures=$((failures + 1))
}

for line in "${operations[@]}"; do
  name=${line%%|*}
  eval "command=(${line#*|})"
  if [ ${#only[@]} -gt 0 ] && [[ ! " ${only[*]} " == *" $name "* ]]; then continue; fi
  # A command this build lacks shows the program's help instead of its own.
  if ! QUILLMONT_HOME=$work/probe "$program" "${command[0]}" --help 2> /dev/null |
    grep -q "^Usage: quillmont ${command[0]}"; then
    echo "$name: skipped (quillmont ${command[0]} is not there)"
    continue
  fi
  tested=$((tested + 1))
  if ! prepare "$name"; then
    report "$name: the scenario could not be prepared"
    continue
  fi
  before=$(ledger)

  # A run without faults counts the points it can fail at and gives the
  # whole change.
  rm -rf "$run" && cp -a "$work/$name" "$run"
  if ! QUILLMONT_FAULT_COUNT=$work/count LD_PRELOAD=$shim q a "${command[@]}" > /dev/null 2> "$work/stderr"; then
    report "$name: fails without faults: $(cat "$work/stderr")"
    continue
  fi
  points=$(cat "$work/count")
  after=$(ledger)
  if [ "$after" = "$before" ]; then
    report "$name: changes nothing without faults"
    continue
  fi

  runs=0
  failed_before=$failures
  for ((n = 1; n <= points; n++)); do
    for always in 0 1; do
      runs=$((runs + 1))
      how="fault $n of $points$([ $always = 1 ] && echo ' and every one after')"
      rm -rf "$run" && cp -a "$work/$name" "$run"
      QUILLMONT_FAULT_AT=$n QUILLMONT_FAULT_ALWAYS=$always LD_PRELOAD=$shim q a "${command[@]}" \
        > /dev/null 2> "$work/stderr"
      status=$?
      if ! doctor=$(q a doctor 2>&1) || ! grep -q -E '^Integrity +ok$' <<< "$doctor"; then
        report "$name, $how: the store is not sound after exit status $status:"$'\n'"$doctor"
        continue
      fi
      now=$(ledger)
      if [ $status -eq 0 ] && [ "$now" != "$after" ]; then
        report "$name, $how: exit status 0 without the whole change"
      elif [ $status -ne 0 ] && [ "$now" != "$before" ]; then
        if [ "$now" = "$after" ]; then
          report "$name, $how: exit status $status but the change is in: $(head -c 300 "$work/stderr")"
        else
          report "$name, $how: exit status $status and part of the change is in"
        fi
      elif [ $status -ne 0 ] && [ ! -s "$work/stderr" ]; then
        report "$name, $how: exit status $status without a word why"
      fi
      open=$(find "$run"/a "$run"/b -perm /077 -print 2> /dev/null)
      if [ -n "$open" ]; then
        report "$name, $how: others may read: $open"
      fi
      if ! q a "${command[@]}" > /dev/null 2> "$work/stderr"; then
        report "$name, $how: the next run fails: $(head -c 300 "$work/stderr")"
      fi
    done
  done
  echo "$name: $points fault points, $runs runs, $((failures - failed_before)) failures"
done

[ $tested -gt 0 ] || exit 77
[ $failures -eq 0 ]
