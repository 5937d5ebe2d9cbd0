#!/usr/bin/env bash
# Builds the coverage preset, runs the whole suite once and prints line and branch coverage of
# src/ per area (src/<area>/), then the total. Arguments go to ctest (e.g. -R llm_tests).
# Branches that only throw, and those the compiler adds but no source can reach, are not
# counted. Needs gcovr, which it installs when missing; ./test does not measure coverage.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
build=build/coverage

if ! command -v gcovr >/dev/null; then
  echo "Installing: gcovr" >&2
  sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends gcovr >&2
fi

if [ ! -f "$build/CMakeCache.txt" ]; then
  launcher=()
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  cmake --preset coverage "${launcher[@]}" >&2
fi
cmake --build --preset coverage >&2

# Counts of an earlier run would add up with this one's.
find "$build" -name '*.gcda' -delete
status=0
ctest --preset coverage "$@" >&2 || status=$?

summary=$(mktemp)
trap 'rm -f "$summary"' EXIT
# gcov runs once per counter file: the benchmark's and third-party objects are not searched at all.
# The tests' objects are, since code inlined from src/ headers is counted there.
gcovr --root "$root" --object-directory "$build" --filter "$root/src/" \
  --exclude-directories "$build/(_deps|bench|fuzz)(/|\$)" --gcov-ignore-parse-errors \
  --exclude-throw-branches --exclude-unreachable-branches -j 2 \
  --json-summary "$summary" >/dev/null
python3 - "$summary" <<'PY'
import json, sys
from collections import defaultdict

areas = defaultdict(lambda: [0, 0, 0, 0])
for entry in json.load(open(sys.argv[1]))["files"]:
    parts = entry["filename"].split("/")
    area = parts[1] if parts[0] == "src" and len(parts) > 2 else parts[0]
    counts = areas[area]
    counts[0] += entry["line_covered"]
    counts[1] += entry["line_total"]
    counts[2] += entry["branch_covered"]
    counts[3] += entry["branch_total"]

def share(covered, total):
    return f"{100.0 * covered / total:5.1f}%" if total else "    -"

print(f"{'area':<10} {'lines':>18} {'branches':>18}")
total = [0, 0, 0, 0]
for area in sorted(areas):
    c = areas[area]
    total = [a + b for a, b in zip(total, c)]
    print(f"{area:<10} {share(c[0], c[1])} {c[0]:>5}/{c[1]:<5} {share(c[2], c[3])} {c[2]:>5}/{c[3]:<5}")
c = total
print(f"{'total':<10} {share(c[0], c[1])} {c[0]:>5}/{c[1]:<5} {share(c[2], c[3])} {c[2]:>5}/{c[3]:<5}")
PY
exit "$status"
