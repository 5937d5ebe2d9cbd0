#!/usr/bin/env bash
# Start-to-exit time of a fast-path sentence (hyperfine, 50 runs) and the resident memory of the
# interactive mode before its first sentence, in a scratch home so that no user file is read.
# Usage: bench/startup.sh [path to nuvrel]; run it on an idle machine.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
program=${1:-$root/build/default/apps/nuvrel/nuvrel}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME=$scratch XDG_CONFIG_HOME=$scratch/config XDG_STATE_HOME=$scratch/state
export XDG_DATA_HOME=$scratch/data XDG_CACHE_HOME=$scratch/cache

hyperfine -N --warmup 5 --runs 50 "$program ask 2+2" "$program explain '15% of 80'"
echo "shared objects at start: $(LD_TRACE_LOADED_OBJECTS=1 "$program" | wc -l)"

# The interactive mode on a terminal, waiting for its first line.
sleep 3 | script -qfc "$program" /dev/null >/dev/null &
sleep 1.5
pid=$(pgrep -n -x "$(basename "$program")")
grep -E '^VmRSS' "/proc/$pid/status"
wait
