#!/usr/bin/env bash
# Installs, builds and runs every test: the release and sanitizer builds, the same golden bytes under clang, the
# glTF validator and three.js.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install.sh --with-npm

scripts/check_layers.sh
for preset in release asan clang; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
done
ctest --preset asan -j "$(nproc)" -LE web
ctest --preset clang -j "$(nproc)" -L golden
ctest --preset release -j "$(nproc)"
