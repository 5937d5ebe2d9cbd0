#!/usr/bin/env bash
# Builds llama-server (CPU only, statically linked) from the llama.cpp source
# that ships inside the npm package node-llama-cpp, once per machine, into a
# cache below the user's home. The cloned source stays in the cache beside the
# binary: tools/make_test_model.py takes gguf-py and a vocabulary from it.
#
#   scripts/install-llama-server.sh        prints the binary's path on stdout
#
# Quick and silent when the binary is already there and runs. Progress and
# errors go to stderr. Nothing is left half-installed: source and build live
# in a temporary folder inside the cache and are moved into place at the end.
set -euo pipefail

package=node-llama-cpp
version=3.22.1
jobs=${NUVREL_LLAMA_BUILD_JOBS:-2}

[ -n "${HOME:-}" ] || { echo "install-llama-server: error: HOME is not set" >&2; exit 1; }
cache=${XDG_CACHE_HOME:-$HOME/.cache}/nuvrel/llama-server/$version
bin=$cache/bin/llama-server
src=$cache/src

say() { printf 'install-llama-server: %s\n' "$*" >&2; }
die() { say "error: $*"; exit 1; }

binary_works() { [ -x "$bin" ] && "$bin" --version >/dev/null 2>&1; }
source_present() { [ -d "$src/gguf-py/gguf" ] && [ -f "$src/models/ggml-vocab-qwen2.gguf" ]; }

if binary_works && source_present; then
  printf '%s\n' "$bin"
  exit 0
fi

# --- Debian packages (only those missing) -------------------------------------

missing_packages() {
  local p status
  for p in git cmake ninja-build g++; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)
    [ "$status" = installed ] || printf '%s\n' "$p"
  done
  # npm may come with a nodejs that is not Debian's own (it bundles npm):
  # ask for the packages only when the commands are missing.
  command -v node >/dev/null 2>&1 || printf '%s\n' nodejs
  command -v npm >/dev/null 2>&1 || printf '%s\n' npm
}

install_missing() {
  local missing
  mapfile -t missing < <(missing_packages)
  [ ${#missing[@]} -eq 0 ] && return 0
  say "installing Debian packages: ${missing[*]}"
  local sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  "${sudo[@]}" apt-get update -qq >&2 || die "apt-get update failed"
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2 \
    || die "apt-get install ${missing[*]} failed"
}

install_missing

# --- One installer at a time ----------------------------------------------------

mkdir -p "$cache" || die "cannot create $cache"
exec 9>"$cache/.lock"
if ! flock -n 9; then
  say "another install is running; waiting for it"
  flock 9 || die "cannot lock $cache/.lock"
fi
if binary_works && source_present; then
  printf '%s\n' "$bin"
  exit 0
fi

tmp=$(mktemp -d "$cache/.tmp.XXXXXX") || die "cannot create a temporary folder in $cache"
trap 'rm -rf "$tmp"' EXIT

# --- Source: the git bundle inside the npm package ------------------------------

fetch_source() {
  say "fetching $package@$version from the npm registry"
  (cd "$tmp" && npm pack "$package@$version" --silent --pack-destination "$tmp" >/dev/null 2>"$tmp/npm.log") \
    || { cat "$tmp/npm.log" >&2; die "npm pack $package@$version failed"; }
  local tarball=$tmp/$package-$version.tgz
  [ -f "$tarball" ] || die "npm pack did not produce $tarball"
  tar -xzf "$tarball" -C "$tmp" package/llama/gitRelease.bundle \
    || die "the package has no llama/gitRelease.bundle"
  rm -f "$tarball"
  say "cloning the llama.cpp source from the package's git bundle"
  git clone --quiet -c advice.detachedHead=false "$tmp/package/llama/gitRelease.bundle" "$tmp/src" >&2 \
    || die "git clone of the bundle failed"
  rm -rf "$tmp/package"
  [ -d "$tmp/src/gguf-py/gguf" ] || die "the source has no gguf-py/gguf"
  [ -f "$tmp/src/models/ggml-vocab-qwen2.gguf" ] || die "the source has no models/ggml-vocab-qwen2.gguf"
  rm -rf "$src"
  mv "$tmp/src" "$src" || die "cannot move the source into $src"
  say "source in $src ($(git -C "$src" rev-parse --short HEAD))"
}

source_present || fetch_source

# --- Build only llama-server ------------------------------------------------------

# Reads Ninja's "[done/total] " lines and says every tenth of the way on stderr.
show_progress() {
  local line done total step last=0
  while IFS= read -r line; do
    [[ $line =~ ^\[([0-9]+)/([0-9]+)\]\  ]] || continue
    done=${BASH_REMATCH[1]} total=${BASH_REMATCH[2]}
    step=$((10 * done / total))
    if [ "$step" -gt "$last" ]; then
      last=$step
      say "building: $((10 * step))% ($done of $total)"
    fi
  done
}

build_server() {
  local build=$tmp/build log=$tmp/build.log start end
  start=$(date +%s)
  say "Building llama-server (about 10 minutes on two cores, once)…"
  # CPU only, static, portable (no -march=native: the cache may outlive this CPU),
  # no network at build time (no prebuilt web UI download, no HTTPS client).
  cmake -S "$src" -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=Release \
    -DBUILD_SHARED_LIBS=OFF \
    -DGGML_NATIVE=OFF \
    -DGGML_CPU=ON \
    -DGGML_CUDA=OFF -DGGML_VULKAN=OFF -DGGML_METAL=OFF -DGGML_HIP=OFF \
    -DGGML_SYCL=OFF -DGGML_OPENCL=OFF -DGGML_MUSA=OFF -DGGML_CANN=OFF \
    -DGGML_RPC=OFF -DGGML_BLAS=OFF -DGGML_OPENMP=OFF -DGGML_CCACHE=OFF \
    -DGGML_BACKEND_DL=OFF \
    -DLLAMA_OPENSSL=OFF \
    -DLLAMA_BUILD_COMMON=ON \
    -DLLAMA_BUILD_TOOLS=ON -DLLAMA_BUILD_SERVER=ON \
    -DLLAMA_BUILD_TESTS=OFF -DLLAMA_BUILD_EXAMPLES=OFF -DLLAMA_BUILD_APP=OFF \
    -DLLAMA_BUILD_UI=OFF -DLLAMA_USE_PREBUILT_UI=OFF \
    -DLLAMA_LLGUIDANCE=OFF \
    >"$log" 2>&1 || { tail -n 40 "$log" >&2; die "cmake configure failed (log above)"; }

  # Ninja's own lines go to the log; every tenth of the way is shown.
  if ! NINJA_STATUS='[%f/%t] ' cmake --build "$build" --target llama-server -j "$jobs" 2>&1 \
      | tee -a "$log" \
      | show_progress; then
    cp "$log" "$cache/build-failed.log" 2>/dev/null || true
    grep -E -B2 -A8 'error|FAILED' "$log" | tail -n 60 >&2 || tail -n 40 "$log" >&2
    die "building llama-server failed (full log: $cache/build-failed.log)"
  fi

  local built=$build/bin/llama-server
  [ -x "$built" ] || die "the build finished without $built"
  "$built" --version >/dev/null 2>&1 || die "the built llama-server does not run (--version failed)"
  strip "$built" 2>/dev/null || true
  mkdir -p "$cache/bin"
  cp "$built" "$bin.part.$$" && mv -f "$bin.part.$$" "$bin" || { rm -f "$bin.part.$$"; die "cannot install $bin"; }
  rm -f "$cache/build-failed.log"
  end=$(date +%s)
  say "built llama-server in $((end - start)) s"
}

binary_works || build_server
binary_works || die "$bin does not run after the install"
printf '%s\n' "$bin"
