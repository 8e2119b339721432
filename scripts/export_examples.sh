#!/usr/bin/env bash
# Exports every example scene both ways: export_examples.sh COMMAND OUT_DIR
set -euo pipefail
command=$(realpath "$1")
out=$2
examples=$(dirname "$0")/../examples

mkdir -p "$out"
for scene in "$examples"/*.orvo "$examples"/*.obj; do
  name=$(basename "${scene%.*}")
  for output in "$out/$name.glb" "$out/$name.gltf"; do
    "$command" export "$scene" -o "$output" >/dev/null
    echo "$scene -> $output"
  done
done
