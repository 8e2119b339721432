#!/usr/bin/env bash
# What the tests reach of the code, all tests but the browser's: lines and branches of each folder. Fails when a folder
# of the plug-in is below 90 % of lines or 80 % of branches.
#
#     coverage.sh [--plugin]
#
# With --plugin only the tests that run the plug-in in their own process are built and run, and only its folders shown;
# all but the sweep over failing calls of the host, which is slow here and can only raise the figures.
# Branches that only exceptions take are left out: the compiler puts one behind every call.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install.sh --with-coverage
cmake --preset coverage >/dev/null
if [ "${1:-}" = --plugin ]; then
  tests=()
  for name in actions animation buffers_files document_json geometry_tables golden images load_options \
    load_options_config load_options_stream log materials mesh_export nodes random_scene save_road scan skinned_pose \
    skins textures transform_math; do
    tests+=("${name}_test")
  done
  cmake --build --preset coverage --target "${tests[@]}"
  find build/coverage -name '*.gcda' -delete
  for test in "${tests[@]}"; do "build/coverage/bin/$test" --gtest_brief=1; done
else
  cmake --build --preset coverage
  find build/coverage -name '*.gcda' -delete
  ctest --preset coverage -j "$(nproc)" -LE web
fi

gcovr --root . -j "$(nproc)" --exclude-throw-branches --exclude-unreachable-branches \
  --json-summary build/coverage/summary.json build/coverage
python3 - "$@" <<'END'
import json
import sys

LEAST_LINES, LEAST_BRANCHES = 90, 80
PLUGIN = ("saver", "document", "geometry", "materials", "animation", "options")
OTHERS = () if "--plugin" in sys.argv else ("host", "headless", "readers", "importer", "tool")

with open("build/coverage/summary.json", encoding="utf-8") as file:
    files = json.load(file)["files"]
low = []
for folder in PLUGIN + OTHERS:
    inside = [entry for entry in files if entry["filename"].startswith(folder + "/")]
    lines, branches = (100 * sum(entry[f"{kind}_covered"] for entry in inside) / sum(entry[f"{kind}_total"] for entry in inside)
                       for kind in ("line", "branch"))
    print(f"{folder:10} lines {lines:5.1f} %  branches {branches:5.1f} %")
    if folder in PLUGIN and (lines < LEAST_LINES or branches < LEAST_BRANCHES):
        low.append(folder)
if low:
    sys.exit(f"below {LEAST_LINES} % of lines or {LEAST_BRANCHES} % of branches: {', '.join(low)}")
END
