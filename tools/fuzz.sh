#!/usr/bin/env bash
# Runs the libFuzzer targets of fuzz/ on their corpora, one after the other.
#
#   tools/fuzz.sh TARGET|all MINUTES   each target for MINUTES (a fraction is fine); what a run
#                                      finds that adds coverage is merged into
#                                      fuzz/corpus/TARGET/, a crash lands in build/fuzz/findings/
#   tools/fuzz.sh TARGET|all --smoke   the corpus and 2,000 mutations from a fixed seed each,
#                                      the corpus left as it is (CI)
#
# Prints per target the executions per second, the coverage and the corpus size; fails when
# any target finds a crash, a leak, a hang or a broken invariant.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

usage() { echo "usage: tools/fuzz.sh TARGET|all MINUTES|--smoke" >&2; exit 2; }
[ $# -eq 2 ] || usage
which=$1
smoke=false
if [ "$2" = --smoke ]; then
  smoke=true
  seconds=-
else
  seconds=$(awk -v m="$2" 'BEGIN { s = int(m * 60); if (s < 1) exit 1; print s }') || usage
fi

if ! command -v clang++-14 >/dev/null; then
  sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends \
    clang-14 libclang-rt-14-dev >&2
fi
[ -f build/fuzz/CMakeCache.txt ] || cmake --preset fuzz >&2
if [ "$which" = all ]; then
  mapfile -t targets < <(sed -n 's/^nuvrel_fuzzer(\([a-z_]*\) .*/\1/p' fuzz/CMakeLists.txt)
else
  targets=("$which")
fi
# NUVREL_FUZZ_NO_BUILD=1 runs what is built, while a build of the same folder is under way.
[ -n "${NUVREL_FUZZ_NO_BUILD:-}" ] || cmake --build --preset fuzz --target "${targets[@]/%/_fuzzer}" >&2

# On a memory file system where there is one: the targets that write files sync each input,
# which on a disk means waiting instead of fuzzing.
scratch=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export TMPDIR=$scratch
failed=()
printf '%-18s %8s %8s %8s %8s  %s\n' target seconds exec/s cov features corpus
for target in "${targets[@]}"; do
  corpus=fuzz/corpus/$target
  findings=build/fuzz/findings/$target
  mkdir -p "$corpus" "$findings" "$scratch/$target"
  options=(-timeout=10 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$findings/")
  # CI's smoke run replays the corpus and then makes a fixed number of mutations from a fixed
  # seed: the same build finds the same things on every run, so CI never fails by chance.
  if $smoke; then
    options+=(-seed=1 -runs=2000)
  else
    options+=(-max_total_time="$seconds")
  fi
  dict=fuzz/dictionaries/$target.dict
  [ -f "$dict" ] && options+=(-dict="$dict")
  log=$scratch/$target.log
  # New inputs go to the scratch folder first; the corpus is only read.
  status=0
  "build/fuzz/fuzz/${target}_fuzzer" "${options[@]}" "$scratch/$target" "$corpus" >"$log" 2>&1 \
    || status=$?
  if [ "$status" -ne 0 ]; then
    failed+=("$target")
    grep -E 'ERROR|invariant broken|SUMMARY|Test unit written' "$log" >&2 || tail -20 "$log" >&2
  fi
  if ! $smoke && [ "$status" -eq 0 ]; then
    "build/fuzz/fuzz/${target}_fuzzer" -merge=1 "$corpus" "$scratch/$target" >/dev/null 2>&1
  fi
  execs=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
  read -r cov features < <(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -1 \
    | awk '{ print $2, $4 }') || true
  printf '%-18s %8s %8s %8s %8s  %s\n' "$target" "$seconds" "${execs:-?}" "${cov:-?}" \
    "${features:-?}" "$(find "$corpus" -type f | wc -l)"
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz: findings in: ${failed[*]} (inputs under build/fuzz/findings/)" >&2
  exit 1
fi
