#!/usr/bin/env bash
# export_models.sh COMMAND MODELS OUT: exports every model of a folder to OUT/KIND_NAME.glb and OUT/gltf/KIND_NAME.gltf.
# Ends with 77, which skips, where the folder isn't there.
set -euo pipefail
command=$1 models=$2 out=$3
if ! [ -d "$models" ]; then
  echo "SKIPPED: the folder of models $models is not here, so no model of foreign formats is tried" >&2
  exit 77
fi
rm -rf "$out"
mkdir -p "$out/gltf"
count=0
# The incomplete boxes are broken on purpose, and refused.
while IFS= read -r model; do
  name=$(basename "$model")
  name=${name##*.}_${name%.*}
  "$command" export "$model" -o "$out/$name.glb" --indices auto -q
  "$command" export "$model" -o "$out/gltf/$name.gltf" --indices auto -q
  count=$((count + 1))
done < <(find "$models" -name 'box-incomplete*' -prune -o -type f -iregex '.*\.\(dae\|fbx\|ply\|stl\|obj\)' -print | LC_ALL=C sort)
[ "$count" -gt 0 ] || { echo "no models in $models" >&2; exit 1; }
echo "$count models exported both ways"
