# Shared by the desktop benchmark scripts (sourced, not run): what a running
# program costs while nothing happens.
#
#   . "$(dirname "$0")/idle-process.sh"
#   report_idle PID SECONDS    # resident memory, then CPU used over SECONDS, then resident again

report_idle() {
  local pid=$1 seconds=$2 before after
  ticks() { awk '{print $14 + $15}' "/proc/$pid/stat"; }
  rss() { awk '/^VmRSS/ {print $2 " kB"}' "/proc/$pid/status"; }
  echo "resident after start-up: $(rss)"
  before=$(ticks)
  sleep "$seconds"
  after=$(ticks)
  echo "CPU while idle for ${seconds} s: $(((after - before) * 1000 / $(getconf CLK_TCK))) ms"
  echo "resident after idling: $(rss)"
}
