#!/usr/bin/env bash
# Fails when a C++ file of the project differs from what clang-format makes of it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! command -v clang-format >/dev/null; then
  sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends clang-format >&2
fi
git ls-files -z -- '*.cpp' '*.h' | xargs -0 clang-format --dry-run -Werror
