#!/usr/bin/env bash
# End-to-end test of `quillmont sync` through a real Syncthing pair on this
# machine: two Syncthing instances (loopback only, no discovery, relays,
# NAT, usage or crash reporting, upgrades) share one folder, and two
# Quillmont data homes ("a" and "b") sync through their own copy of it.
# A booking made on a reaches b; a booking made on b and b's deletion of
# a's booking reach a; both end with the same ledger and balance, and no
# conflict copy appears.
#
# Usage: scripts/test-syncthing.sh [QUILLMONT_BINARY]
#   (default: build/default/cli/quillmont in the repository)
# Skips (exit 0) when syncthing is not installed; needs curl.
set -euo pipefail

readonly me=test-syncthing
script_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
repo_root=$(cd "$script_dir/.." && pwd)

say() { printf '%s: %s\n' "$me" "$*"; }

if [[ $# -gt 1 ]]; then
  echo "usage: scripts/test-syncthing.sh [QUILLMONT_BINARY]" >&2
  exit 2
fi
quillmont=${1:-$repo_root/build/default/cli/quillmont}
[[ $quillmont == /* ]] || quillmont=$PWD/$quillmont
if [[ ! -x $quillmont || -d $quillmont ]]; then
  echo "$me: no quillmont binary at $quillmont (build it first, or pass its path)" >&2
  exit 1
fi

if ! command -v syncthing >/dev/null 2>&1; then
  say "skipped: syncthing is not installed (apt install syncthing)"
  exit 0
fi
if ! command -v curl >/dev/null 2>&1; then
  echo "$me: curl is needed to configure Syncthing (apt install curl)" >&2
  exit 1
fi
if ! command -v setsid >/dev/null 2>&1; then
  echo "$me: setsid is needed to run Syncthing (apt install util-linux)" >&2
  exit 1
fi

readonly folder_id=quillmont-e2e
readonly wait_limit=60        # seconds for a file to travel between the two folders
readonly start_limit=30       # seconds for an instance to start, connect, be idle

work=$(mktemp -d "${TMPDIR:-/tmp}/quillmont-syncthing.XXXXXX")
declare -A st_pid=()          # instance (a, b) -> Syncthing's process id

# Syncthing runs as a monitor process and its child, in a session and
# process group of their own (see start_syncthing): both are stopped.
stop_syncthing() {
  local side pid tries
  for side in "${!st_pid[@]}"; do
    pid=${st_pid[$side]}
    kill -TERM -- "-$pid" 2>/dev/null || continue
    for ((tries = 0; tries < 100; tries++)); do
      kill -0 -- "-$pid" 2>/dev/null || break
      sleep 0.1
    done
    kill -KILL -- "-$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  st_pid=()
}

cleanup() {
  local status=$?
  stop_syncthing
  rm -rf "$work"
  exit "$status"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Prints the failure, what was expected and what was found, and the end of
# both Syncthing logs; the EXIT trap then stops everything and cleans up.
fail() {
  local message=$1 expected=${2-} found=${3-} side
  {
    echo "$me: FAILED: $message"
    if [[ -n $expected || -n $found ]]; then
      echo "  expected: $expected"
      echo "  found:"
      printf '%s\n' "$found" | sed 's/^/    /'
    fi
    for side in a b; do
      if [[ -s $work/$side/syncthing.log ]]; then
        echo "  last lines of Syncthing $side's log:"
        tail -n 15 "$work/$side/syncthing.log" | sed 's/^/    /'
      fi
    done
  } >&2
  exit 1
}

# Sets `port` to a port on 127.0.0.1 that nothing listens on and that this
# run has not taken yet.
taken_ports=" "
port=
free_port() {
  local tries
  for ((tries = 0; tries < 200; tries++)); do
    port=$((20000 + RANDOM % 40000))
    [[ $taken_ports == *" $port "* ]] && continue
    if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
      taken_ports+="$port "
      return 0
    fi
  done
  fail "found no free port on 127.0.0.1"
}

api_key() { head -c 24 /dev/urandom | od -An -tx1 | tr -d ' \n'; }

declare -A gui_port=() listen_port=() key=() device_id=()

# The REST API of one instance: api SIDE METHOD PATH [JSON-BODY]
api() {
  local side=$1 method=$2 path=$3 body=${4-}
  local args=(-sS --fail --max-time 10 -X "$method" -H "X-API-Key: ${key[$side]}")
  [[ -n $body ]] && args+=(-H "Content-Type: application/json" --data "$body")
  curl "${args[@]}" "http://127.0.0.1:${gui_port[$side]}$path"
}

# Runs quillmont as machine SIDE.
qm() {
  local side=$1
  shift
  QUILLMONT_HOME="$work/$side/quillmont" TZ=Europe/Berlin NO_COLOR=1 "$quillmont" "$@"
}

# The JSON values of KEY in the text on standard input, one a line.
json_strings() { grep -o "\"$1\" *: *\"[^\"]*\"" | sed 's/.*: *"//; s/"$//' || true; }

# Option NAME of config.xml set to VALUE; fails when the file has no such option.
set_option() {
  local config=$1 name=$2 value=$3
  grep -q "<$name>[^<]*</$name>" "$config" || fail "Syncthing's config.xml has no <$name> option"
  sed -i "s|<$name>[^<]*</$name>|<$name>$value</$name>|" "$config"
}

start_syncthing() {
  local side=$1 home=$work/$1/syncthing config
  mkdir -p "$home" "$work/$side/share"
  free_port
  gui_port[$side]=$port
  free_port
  listen_port[$side]=$port
  key[$side]=$(api_key)

  STNODEFAULTFOLDER=1 syncthing generate --home="$home" --no-default-folder --skip-port-probing \
    >"$work/$side/generate.log" 2>&1 || fail "syncthing generate failed for $side" "" "$(cat "$work/$side/generate.log")"
  config=$home/config.xml
  # Everything that would leave this machine is off before the first start.
  set_option "$config" listenAddress "tcp://127.0.0.1:${listen_port[$side]}"
  set_option "$config" globalAnnounceEnabled false
  set_option "$config" localAnnounceEnabled false
  set_option "$config" relaysEnabled false
  set_option "$config" natEnabled false
  set_option "$config" stunKeepaliveStartS 0
  set_option "$config" urAccepted -1
  set_option "$config" crashReportingEnabled false
  set_option "$config" autoUpgradeIntervalH 0
  set_option "$config" startBrowser false
  set_option "$config" reconnectionIntervalS 5

  device_id[$side]=$(syncthing serve --home="$home" --device-id 2>/dev/null |
    grep -o '[A-Z0-9]\{7\}\(-[A-Z0-9]\{7\}\)\{7\}' | head -n 1 || true)
  [[ -n ${device_id[$side]} ]] || fail "could not read the Syncthing device ID of $side"

  # setsid: the monitor's process id is also its group's, so that
  # stop_syncthing reaches the child it starts.
  STNODEFAULTFOLDER=1 STNOUPGRADE=1 STNORESTART=1 \
    setsid syncthing serve --home="$home" --no-browser --no-restart --no-upgrade --no-default-folder \
    --gui-address="http://127.0.0.1:${gui_port[$side]}" --gui-apikey="${key[$side]}" \
    --logflags=3 >"$work/$side/syncthing.log" 2>&1 </dev/null &
  st_pid[$side]=$!
}

# Waits until CHECK (a command) succeeds, every half second, for at most
# LIMIT seconds; returns 1 on time-out.
wait_for() {
  local limit=$1
  shift
  local deadline=$((SECONDS + limit))
  until "$@"; do
    ((SECONDS < deadline)) || return 1
    sleep 0.5
  done
}

alive() {
  local side
  for side in a b; do
    kill -0 "${st_pid[$side]}" 2>/dev/null || fail "Syncthing $side stopped unexpectedly"
  done
}

api_answers() { alive && [[ $(api "$1" GET /rest/system/ping 2>/dev/null || true) == *pong* ]]; }

# Whether SIDE has a live connection to the other instance.
connected() {
  local side=$1 other=$2 json
  alive
  json=$(api "$side" GET /rest/system/connections 2>/dev/null | tr -d ' \n\t') || return 1
  [[ $json =~ \"${device_id[$other]}\":\{[^}]*\"connected\":true ]]
}

folder_idle() {
  alive
  [[ $(api "$1" GET "/rest/db/status?folder=$folder_id" 2>/dev/null | tr -d ' \n\t') == *'"state":"idle"'* ]]
}

configure_syncthing() {
  local side=$1 other=$2
  api "$side" POST /rest/config/devices \
    "{\"deviceID\":\"${device_id[$other]}\",\"name\":\"$other\",\"addresses\":[\"tcp://127.0.0.1:${listen_port[$other]}\"]}" \
    >/dev/null || fail "could not introduce $other to Syncthing $side"
  api "$side" POST /rest/config/folders \
    "{\"id\":\"$folder_id\",\"label\":\"Quillmont\",\"path\":\"$work/$side/share\",\"type\":\"sendreceive\",\
\"rescanIntervalS\":3,\"fsWatcherEnabled\":true,\"fsWatcherDelayS\":1,\
\"devices\":[{\"deviceID\":\"${device_id[a]}\"},{\"deviceID\":\"${device_id[b]}\"}]}" \
    >/dev/null || fail "could not share the folder on Syncthing $side"
}

# Whether the FILE of the folder copy FROM has arrived whole in the copy TO.
arrived() {
  local from=$1 to=$2 name
  shift 2
  for name in "$@"; do
    [[ -f $work/$to/share/$name ]] && cmp -s "$work/$from/share/$name" "$work/$to/share/$name" || return 1
  done
}

wait_arrival() {
  local from=$1 to=$2
  shift 2
  wait_for "$wait_limit" arrived "$from" "$to" "$@" ||
    fail "$from's files did not reach $to's folder within ${wait_limit} s" "$* equal in both folders" \
      "$(cd "$work" && ls -la "$from/share" "$to/share" 2>&1)"
}

ids_of() {
  local listing
  listing=$(qm "$1" bookings list --all --json) || fail "quillmont bookings list failed on $1"
  json_strings id <<<"$listing" | sort
}

expect_ids() {
  local side=$1 expected=$2 found
  found=$(ids_of "$side")
  [[ $found == "$expected" ]] || fail "$side's bookings are not what they should be" "$expected" "$found"
}

expect_output() {
  local what=$1 pattern=$2 output=$3
  grep -qE "$pattern" <<<"$output" || fail "$what" "a line matching /$pattern/" "$output"
}

ledger_of() {
  local status
  status=$(qm "$1" sync status) || fail "quillmont sync status failed on $1"
  grep -o -m 1 '[0-9A-F-]\{36\}\.ledger\.json' <<<"$status" | head -n 1 || true
}

# --- Syncthing pair ---------------------------------------------------------
say "starting two Syncthing instances in $work"
start_syncthing a
start_syncthing b
for side in a b; do
  wait_for "$start_limit" api_answers "$side" ||
    fail "Syncthing $side's REST API did not answer on 127.0.0.1:${gui_port[$side]} within ${start_limit} s"
done
configure_syncthing a b
configure_syncthing b a
if ! { wait_for "$start_limit" connected a b && wait_for "$start_limit" connected b a; }; then
  fail "the two Syncthing instances did not connect within ${start_limit} s" \
    "a connection between 127.0.0.1:${listen_port[a]} and 127.0.0.1:${listen_port[b]}" \
    "$(api a GET /rest/system/connections 2>&1 || true)"
fi
for side in a b; do
  wait_for "$start_limit" folder_idle "$side" ||
    fail "the shared folder of Syncthing $side did not become idle within ${start_limit} s" '"state": "idle"' \
      "$(api "$side" GET "/rest/db/status?folder=$folder_id" 2>&1 || true)"
done
say "Syncthing a and b are connected and share $folder_id"

# --- Two Quillmont machines -------------------------------------------------
qm a sync setup "$work/a/share" --name a >/dev/null || fail "quillmont sync setup failed on a"
qm b sync setup "$work/b/share" --name b >/dev/null || fail "quillmont sync setup failed on b"
ledger_a=$(ledger_of a)
ledger_b=$(ledger_of b)
[[ -n $ledger_a && -n $ledger_b && $ledger_a != "$ledger_b" ]] ||
  fail "sync status does not name two different ledger files" "two <ID>.ledger.json" "a: $ledger_a, b: $ledger_b"
device_a=${ledger_a%.ledger.json}.device.json
device_b=${ledger_b%.ledger.json}.device.json

# --- a books, b receives ----------------------------------------------------
qm a book 30 --note "booked on a" >/dev/null 2>&1 || fail "quillmont book failed on a"
booking_a=$(ids_of a)
[[ $(wc -l <<<"$booking_a") -eq 1 && -n $booking_a ]] || fail "a should have one booking" "one id" "$booking_a"
output=$(qm a sync) || fail "quillmont sync failed on a" "" "$output"
expect_output "a did not write its ledger" "^Wrote this machine's ledger to $ledger_a\.$" "$output"
say "a booked 30 minutes and wrote its ledger; waiting for it to reach b"
wait_arrival a b "$ledger_a" "$device_a"
output=$(qm b sync) || fail "quillmont sync failed on b" "" "$output"
expect_output "b did not merge a's booking" "^Merged a \([0-9A-F]{8}\): inserted [1-9][0-9]*," "$output"
expect_ids b "$booking_a"
listing=$(qm b bookings list --all --json)
grep -q '"note" *: *"booked on a"' <<<"$listing" || fail "a's booking on b lost its note" '"note" : "booked on a"' "$listing"
say "b has a's booking"

# --- b books and deletes a's booking, a receives ----------------------------
qm b book 15 --note "booked on b" >/dev/null 2>&1 || fail "quillmont book failed on b"
qm b bookings delete "${booking_a:0:8}" >/dev/null 2>&1 || fail "quillmont bookings delete ${booking_a:0:8} failed on b"
booking_b=$(ids_of b)
[[ $(wc -l <<<"$booking_b") -eq 1 && -n $booking_b && $booking_b != "$booking_a" ]] ||
  fail "b should have only its own booking after deleting a's" "one id other than $booking_a" "$booking_b"
output=$(qm b sync) || fail "quillmont sync failed on b" "" "$output"
expect_output "b did not write its ledger" "^Wrote this machine's ledger to $ledger_b\.$" "$output"
say "b booked 15 minutes, deleted a's booking and wrote its ledger; waiting for it to reach a"
wait_arrival b a "$ledger_b" "$device_b"
output=$(qm a sync) || fail "quillmont sync failed on a" "" "$output"
expect_output "a did not merge b's booking and deletion" "^Merged b \([0-9A-F]{8}\): inserted [1-9][0-9]*,.*deleted 1\.$" "$output"
expect_ids a "$booking_b"
say "a has b's booking and no longer a's own"

# --- a's new ledger goes back to b: both stay equal -------------------------
expect_output "a did not write its merged ledger" "^Wrote this machine's ledger to $ledger_a\.$" "$output"
wait_arrival a b "$ledger_a" "$device_a"
output=$(qm b sync) || fail "quillmont sync failed on b" "" "$output"
expect_ids b "$booking_b"

overview_a=$(qm a) || fail "quillmont's overview failed on a"
overview_b=$(qm b) || fail "quillmont's overview failed on b"
balance_a=$(grep -m 1 '^Balance' <<<"$overview_a" || true)
balance_b=$(grep -m 1 '^Balance' <<<"$overview_b" || true)
[[ $balance_a == "$balance_b" ]] || fail "a and b show different balances" "$balance_a" "$balance_b"
[[ $balance_a =~ ^Balance\ +\+0:15$ ]] || fail "the balance is not b's 15 minutes" "Balance   +0:15" "$balance_a"
say "both show \"$balance_a\""

conflicts=$(find "$work/a/share" "$work/b/share" -name '*.sync-conflict-*' 2>/dev/null || true)
[[ -z $conflicts ]] || fail "Syncthing left conflict copies" "none" "$conflicts"

say "took ${SECONDS} s"
say "passed"
