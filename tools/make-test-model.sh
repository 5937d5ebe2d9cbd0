#!/usr/bin/env bash
# Writes the tiny random-weight test model (see make_test_model.py) and prints
# its path. Runs under Debian's Python, which sees python3-numpy (the python3
# first on PATH may be another interpreter); installs python3-numpy if missing.
#
#   tools/make-test-model.sh [OUTPUT] [--source DIR] [--seed N] [--force] [--pooling mean]
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
python=/usr/bin/python3

[ -x "$python" ] || { echo "make-test-model: error: $python is missing (Debian: apt-get install python3)" >&2; exit 1; }

status=$(dpkg-query -W -f='${db:Status-Status}' python3-numpy 2>/dev/null || true)
if [ "$status" != installed ]; then
  echo "make-test-model: installing Debian package: python3-numpy" >&2
  sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  "${sudo[@]}" apt-get update -qq >&2
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends python3-numpy >&2
fi

exec "$python" "$here/make_test_model.py" "$@"
