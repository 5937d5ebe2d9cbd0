#!/usr/bin/env bash
# Installs the Debian packages the project builds with (only those missing),
# the local model server (built once into the user's cache), then configures
# and builds the given preset. Quick and silent the second time.
#
#   scripts/setup.sh           what ./run needs: the program can answer without a
#                              server, so a failed server build only warns
#   scripts/setup.sh --test    what ./test needs: the server and the tiny test
#                              model too, and any failure stops
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
preset=${NUVREL_PRESET:-default}

packages=(
  g++ cmake ninja-build pkg-config
  libicu-dev libcurl4-openssl-dev nlohmann-json3-dev libxml2-dev libssl-dev
  libpoppler-cpp-dev libcpp-httplib-dev libical-dev libglib2.0-dev dbus dbus-daemon
  libgtest-dev libgmock-dev libbenchmark-dev curl hyperfine
  libxcb1-dev libxcb-randr0-dev libxcb-ewmh-dev xvfb openbox x11-utils imagemagick
  xclip mpv mpv-mpris
  libsecret-1-dev gnome-keyring help2man libtracker-sparql-3.0-dev libedit-dev
  clang-14 libclang-rt-14-dev
  qt6-base-dev qt6-qpa-plugins libxcb-keysyms1-dev fonts-noto-cjk fonts-noto-color-emoji xdotool
  fonts-dejavu-core libqt6svg6
)

missing_packages() {
  # One query for all: a package dpkg has never heard of is missing too.
  local installed
  installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null \
    | awk '$2 == "installed" { print $1 }' || true)
  local p
  for p in "${packages[@]}"; do
    grep -qx -- "$p" <<<"$installed" || printf '%s\n' "$p"
  done
}

install_missing() {
  local missing
  mapfile -t missing < <(missing_packages)
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}" >&2
  local sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  "${sudo[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}

build() {
  cd "$root"
  # A build folder configured before the tests became an option is configured again.
  # CI fails on a new compiler warning; a user's build only shows it.
  local strict=()
  if [ "${CI:-}" = true ] && [ "$preset" = default ]; then strict=(-DNUVREL_WARNINGS_AS_ERRORS=ON); fi
  if ! grep -qx 'NUVREL_BUILD_TESTS:BOOL=ON' "build/$preset/CMakeCache.txt" 2>/dev/null; then
    cmake --preset "$preset" "${strict[@]}" >&2
  fi
  cmake --build --preset "$preset" >&2
}

model_server() {
  if [ "${1:-}" = --test ]; then
    "$root/scripts/install-llama-server.sh" >/dev/null
    "$root/tools/make-test-model.sh" >/dev/null
    "$root/tools/make-test-model.sh" --pooling mean >/dev/null
  elif ! "$root/scripts/install-llama-server.sh" >/dev/null; then
    echo "setup: warning: llama-server could not be built; sentences that need the local model will fail" >&2
  fi
}

install_missing
model_server "${1:-}"
build
