#!/usr/bin/env bash
# Measures whole runs against bare programs and other converters, and prints the tables of docs/performance.md.
#
#     bench/run.sh [RUNS]        # medians of RUNS runs in turn, five unless given
#
# Needs a release build, 4 GiB of free disk space and, the first time, the npm registry. Inputs are made in build/bench.
# What isn't there (a bare program that isn't built, assimp of Debian's assimp-utils) is left out of the tables.
set -euo pipefail
cd "$(dirname "$0")/.."

runs=${1:-5}
bin=$PWD/build/release/bin
inputs=$PWD/build/bench
out=$inputs/out
mkdir -p "$out"
[ -x "$bin/vornel" ] || { echo "build the release preset first" >&2; exit 2; }
compare=(python3 bench/compare.py)

converters=$PWD/bench/converters
[ "$converters/node_modules/.package-lock.json" -nt "$converters/package-lock.json" ] ||
  npm --prefix "$converters" ci --no-audit --no-fund --loglevel=error
npx=$converters/node_modules/.bin

# Runs a maker of scenes unless its output is there and newer.
make_scene() {
  local script=$1 output=$2
  shift 2
  [ "$inputs/$output" -nt "scripts/$script" ] || python3 "scripts/$script" "$@" >/dev/null
}

# Adds a row when its program is there.
rows=()
row() {
  local label=$1 units=$2 program=${3%% *}
  if command -v "$program" >/dev/null; then rows+=("$label" "$units" "$3"); fi
}

export_of() { echo "$bin/vornel export $inputs/$1 -o $out/$2 -q ${3:-}"; }

for triangles in 100000 1000000 5000000; do
  make_scene make_scene.py "$triangles.orvo" "$triangles" "$inputs/$triangles.orvo" --obj
  obj=$inputs/$triangles.obj
  corners=$((3 * triangles))
  rows=()
  row 'bare program' "$corners" "$bin/floor_obj $obj $out/floor.glb"
  row 'vornel, OBJ' "$corners" "$(export_of "$triangles.obj" surface.glb '--indices 32')"
  row 'vornel, .orvo with arrays' "$corners" "$(export_of "$triangles.orvo" arrays.glb '--indices 32')"
  if [ "$triangles" = 1000000 ]; then
    row 'gltfpack, WebAssembly' "$corners" "$npx/gltfpack -noq -kv -i $obj -o $out/gltfpack.glb"
    row 'obj2gltf' "$corners" "$npx/obj2gltf -i $obj -o $out/obj2gltf.glb"
    row 'assimp' "$corners" "assimp export $obj $out/assimp.glb"
  fi
  "${compare[@]}" "OBJ of $triangles triangles with normals and UVs" corner "$runs" "${rows[@]}"
done

echo
echo "The saver's own step, beside the least work that gives such a file; arguments: triangles, UV maps, colour maps"
echo
"$bin/save_bench" --benchmark_repetitions="$runs" --benchmark_report_aggregates_only=true 2>/dev/null | grep -E '^Benchmark|_median'

make_scene make_nodes.py nodes.orvo 100000 "$inputs/nodes.orvo" --depth 1000 --materials 10000
make_scene make_nodes.py fewer.orvo 10000 "$inputs/fewer.orvo" --depth 1000 --materials 1000
rows=()
row '10,000 nodes, 1,000 materials' 10000 "$(export_of fewer.orvo fewer.glb)"
row '100,000 nodes, 10,000 materials' 100000 "$(export_of nodes.orvo nodes.glb)"
"${compare[@]}" 'Boxes of their own in chains of 1,000' node "$runs" "${rows[@]}"

make_scene make_rig.py rig.orvo 200 10000 "$inputs/rig.orvo"
make_scene make_rig.py clips.orvo 100 250 "$inputs/clips.orvo" --clips 51 --rate 25
rows=()
row '200 joints over 10,000 samples' 6000000 "$(export_of rig.orvo rig.glb)"
row '100 joints, 51 clips over 250 samples' 3825000 "$(export_of clips.orvo clips.glb)"
"${compare[@]}" 'Joints moving, turning and growing' key "$runs" "${rows[@]}"

# The copy is flushed as an export is. All outputs are removed first, so that every run finds the same disk.
make_scene make_images.py images.orvo 1024 "$inputs/images.orvo" --images 16
rows=()
row 'cat and sync' 1073741824 "sh -c 'cat $inputs/images-*.png >$out/images.cat && sync $out/images.cat'"
row 'vornel' 1073741824 "$(export_of images.orvo images.glb)"
"${compare[@]}" 'A gibibyte of images, embedded' byte "$runs" \
  --setup "rm -f $out/images.cat $out/images.glb" "${rows[@]}"

make_scene make_nodes.py one.orvo 1 "$inputs/one.orvo" --materials 1
rows=()
row 'vornel --version' 1 "$bin/vornel --version"
row 'vornel export' 1 "$(export_of one.orvo one.glb)"
"${compare[@]}" 'Start-up: a scene of one box' run $((4 * runs)) "${rows[@]}"

rm -r "$out"
