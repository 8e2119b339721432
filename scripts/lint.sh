#!/usr/bin/env bash
# Static checks of all sources but the tests; any finding fails.
#
#     lint.sh [--quick] [FOLDER...]
#
# cppcheck reads everything; clang-tidy takes about 11 s of processor time a file, so --quick leaves it out and FOLDERs
# restrict it. What is switched off stands with its reason in .clang-tidy and .cppcheck-suppressions.
set -euo pipefail
cd "$(dirname "$0")/.."
folders=(host saver document geometry materials animation options headless readers importer tool)

cppcheck --quiet -j2 --std=c++20 --language=c++ -I. --enable=warning,performance,portability --inline-suppr \
  --suppressions-list=.cppcheck-suppressions --error-exitcode=1 "${folders[@]}"
echo "cppcheck: clean"
if [ "${1:-}" = --quick ]; then exit; fi

scripts/install.sh --with-lint
cmake --preset clang -DVORNEL_BENCH=OFF >/dev/null
if [ $# -gt 0 ]; then folders=("$@"); fi
find "${folders[@]}" -name '*.cpp' -print0 | sort -z |
  xargs -0 -P2 -n1 clang-tidy --quiet -p build/clang 2>/dev/null
echo "clang-tidy: clean"
