#!/usr/bin/env bash
# Counts the instructions of whole exports of three fixed scenes, and fails when one takes over 5 percent more than
# bench/instruction_counts.json says. Unlike times, counts are the same on a busy machine.
#
#     scripts/check_instructions.sh            # compares
#     scripts/check_instructions.sh --update   # writes the file; say in the commit why a count grows
#
# Counts are those of a release build by g++.
set -euo pipefail
cd "$(dirname "$0")/.."

command=$PWD/build/release/bin/vornel
[ -x "$command" ] || { echo "build the release preset first" >&2; exit 2; }
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT

python3 scripts/make_scene.py 10000 "$folder/surface.orvo" --obj >/dev/null
python3 scripts/make_nodes.py 500 "$folder/nodes.orvo" --depth 50 --materials 50
python3 scripts/make_rig.py 20 2000 "$folder/rig.orvo"

# Prints the instructions of one export. Addresses, environment and the choice of the C library's routines by
# processor are the same on every machine.
count() {
  (cd "$folder" &&
    env -i PATH=/usr/bin:/bin LC_ALL=C GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2,-FMA,-FMA4,-AVX512F,-ERMS,-FSRM \
      setarch -R valgrind --tool=callgrind --callgrind-out-file=/dev/null \
      "$command" export "$1" -o out.glb -q 2>&1) | sed -n 's/.*Collected *: *\([0-9]*\).*/\1/p'
}

# name, unit, how many of them; three values are sampled for each joint and sample
scenes=('surface.obj corner 30000' 'nodes.orvo node 500' 'rig.orvo key 120000')
for scene in "${scenes[@]}"; do
  read -r name unit units <<<"$scene"
  echo "$name $unit $units $(count "$name")"
done | python3 -c '
import json, pathlib, sys

LIMIT = 1.05
path = pathlib.Path("bench/instruction_counts.json")
known = json.loads(path.read_text()) if path.exists() else {}
counts, grown = {}, []
for line in sys.stdin:
    name, unit, units, total = line.split()
    count = int(total) / int(units)
    counts[name] = {"unit": unit, "units": int(units), "instructionsPerUnit": round(count, 1)}
    before = known.get(name, {}).get("instructionsPerUnit")
    change = f"{count / before - 1:+.1%}" if before else "new"
    print(f"{name:12} {count:12.1f} instructions a {unit} ({change})")
    if not before or count > before * LIMIT:
        grown.append(name)
if sys.argv[1:] == ["--update"]:
    path.write_text(json.dumps(counts, indent=2) + "\n")
elif grown:
    sys.exit("more instructions than " + str(path) + " allows: " + ", ".join(grown))
' "$@"
