#!/usr/bin/env bash
# Installs, builds and runs every test: all of them in release, all but the slow browser ones again under the
# sanitizers, the golden bytes once more under clang, with the flags of the fuzzers, to build it once; random scenes in
# all three; and each fuzzer for a minute.
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

cmake --preset asan -DVORNEL_BENCH=OFF >/dev/null
cmake --build --preset asan
ctest --preset asan -j "$jobs" -LE web

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzzers golden_test export_under_locale
ctest --preset fuzz -j "$jobs" -L golden
scripts/check_sameness.sh build/release build/asan build/fuzz

scripts/fuzz.sh 60
