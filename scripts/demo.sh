#!/usr/bin/env bash
# Installs, builds, exports the example scenes and says where the results are.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install.sh

cmake --preset release >/dev/null
cmake --build --preset release --target vornel
scripts/export_examples.sh build/release/bin/vornel out

echo
echo "The exported scenes are in $(pwd)/out; open $(pwd)/out/room.glb in any glTF viewer."
