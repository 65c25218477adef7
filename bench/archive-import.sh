#!/bin/sh
# Whole-process figures for the largest archive an import takes (100,000
# work entries, 100,000 bookings, 10,000 schedules, 100 settings records;
# the document bench_archive builds, the same on every run):
#
# - a first import into an empty data home, a re-import of the same file
#   into the home that holds it, and a dry run of it there: wall and CPU
#   time (hyperfine, one call, so the three are measured side by side);
# - the peak resident memory of each, against the document's size;
# - python3 merely parsing the document with json.load, for scale.
#
#   bench/archive-import.sh
#
# Needs the release build (cmake --preset release && cmake --build --preset
# release), hyperfine and python3. Timings vary with the machine.
set -eu

name=archive-import
. "$(dirname "$0")/whole-process.sh"
bench="$root/build/release/bench/bench_archive"
require_tools hyperfine python3
require_programs "$quillmont" "$bench"

export TZ="${TZ:-Europe/Berlin}" NO_COLOR=1
document="$work/archive.json"
"$bench" --write-document "$document"
mkdir "$work/fresh" "$work/held"
QUILLMONT_HOME="$work/held" "$quillmont" import "$document" >/dev/null

echo "Timing (hyperfine, ${RUNS:-10} runs each)..." >&2
hyperfine -N --warmup 1 --runs "${RUNS:-10}" --export-json "$work/times.json" \
  --command-name "first import" \
  --prepare "sh -c 'rm -rf $work/fresh && mkdir $work/fresh'" \
  "env QUILLMONT_HOME=$work/fresh $quillmont import $document" \
  --command-name "re-import" --prepare true "env QUILLMONT_HOME=$work/held $quillmont import $document" \
  --command-name "dry run" --prepare true "env QUILLMONT_HOME=$work/held $quillmont import --dry-run $document" \
  --command-name "python3 json.load" --prepare true "python3 -c 'import json,sys; json.load(open(sys.argv[1]))' $document" \
  >/dev/null

python3 - "$work" "$quillmont" "$document" <<'EOF'
import json, os, resource, shutil, subprocess, sys
work, quillmont, document = sys.argv[1:4]
size = os.path.getsize(document)

def peak(arguments, home=None):
    """The peak resident size of one run, in bytes (a fresh child each time)."""
    script = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], check=True, stdout=subprocess.DEVNULL); "
              "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
    environment = dict(os.environ, **({"QUILLMONT_HOME": home} if home else {}))
    output = subprocess.run([sys.executable, "-c", script, *arguments], env=environment, check=True,
                            capture_output=True, text=True).stdout
    return int(output.split()[-1]) * 1024

shutil.rmtree(f"{work}/fresh"); os.mkdir(f"{work}/fresh")
peaks = {
    "first import": peak([quillmont, "import", document], f"{work}/fresh"),
    "re-import": peak([quillmont, "import", document], f"{work}/held"),
    "dry run": peak([quillmont, "import", "--dry-run", document], f"{work}/held"),
    "python3 json.load": peak([sys.executable, "-c", "import json,sys; json.load(open(sys.argv[1]))", document]),
}
times = {result["command"]: result for result in json.load(open(f"{work}/times.json"))["results"]}
print(f"document: {size / 2**20:.1f} MiB")
print(f"{'command':<20} {'wall mean':>10} {'CPU':>10} {'peak memory':>12} {'x document':>11}")
for name, result in times.items():
    cpu = (result["user"] + result["system"]) * 1000
    print(f"{name:<20} {result['mean'] * 1000:7.0f} ms {cpu:7.0f} ms {peaks[name] / 2**20:8.1f} MiB {peaks[name] / size:10.2f}x")
EOF
