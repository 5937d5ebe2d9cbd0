#!/usr/bin/env bash
# Prints the share of test lines among the lines of src/, apps/ and tests/ (C++ files), which
# the project keeps at most a third. With --check it fails when the share is above a third.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# Files deleted in the working tree but not yet in the index are not counted.
count() {
  git ls-files -z -- "$@" | grep -z -E '\.(cpp|h)$' | while IFS= read -r -d '' file; do
    if [ -f "$file" ]; then cat "$file"; fi
  done | wc -l
}
code=$(count src apps)
tests=$(count tests)
total=$((code + tests))
share=$((tests * 1000 / total))
printf 'test lines %d of %d (src and apps %d): %d.%d%%\n' "$tests" "$total" "$code" \
  $((share / 10)) $((share % 10))
if [ "${1:-}" = --check ] && [ $((tests * 3)) -gt "$total" ]; then
  echo "test_share: tests are more than a third of the lines" >&2
  exit 1
fi
