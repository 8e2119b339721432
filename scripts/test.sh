#!/usr/bin/env bash
# Installs, builds and runs every test: all of them in release by g++; all but the slow browser ones again by clang under the
# sanitizers; random scenes in both builds; and each fuzzer for a while.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install.sh --with-npm
scripts/check_layers.sh
scripts/lint.sh --quick

jobs=$(nproc)
cmake --preset release >/dev/null
cmake --build --preset release
ctest --preset release -j "$jobs"
scripts/check_instructions.sh

cmake --preset asan >/dev/null
cmake --build --preset asan
ctest --preset asan -j "$jobs" -LE web

scripts/check_sameness.sh build/release build/asan
scripts/fuzz.sh 60
