#!/usr/bin/env bash
# Runs every command of docs/clusters.md, in order, with the built command and a Slurm cluster of this machine alone.
# usage: clusters.sh COMMAND
set -euo pipefail

command=$(realpath "$1")
source=$(realpath "$(dirname "$0")/..")
. "$source/tests/support/slurm_cluster.sh"

fail() {
  echo "clusters: $*" >&2
  tail -n 30 "$work"/*.log "$cluster_directory"/*.log >&2 || true
  exit 1
}

for program in sbatch slurmctld slurmd munged parallel; do
  PATH=$PATH:/usr/sbin command -v "$program" >/dev/null ||
    { echo "clusters: no $program; run scripts/install.sh --with-npm" >&2; exit 1; }
done

work=$(mktemp -d)
cluster_directory=$(mktemp -d)
trap 'stop_cluster; rm -rf "$work" "$cluster_directory"' EXIT
trap 'exit 1' INT TERM

# Prints the blocks of shell commands of the page, one after the other.
commands_of_page() {
  sed -n '/^```sh$/,/^```$/p' "$source/docs/clusters.md" | sed 's/^```.*/:/' |
    sed "s|/usr/share/vornel/|$source/share/|g"
}

mkdir "$work/scenes"
for name in nodes meshes animation empty; do cp "$source/tests/golden/$name.orvo" "$work/scenes"; done
mkdir "$work/bin"
ln -s "$command" "$work/bin/vornel"
export PATH=$work/bin:$PATH
cd "$work"
start_cluster "$cluster_directory"

# A whole run: what each way of running exports, the next one skips.
commands_of_page >page.sh
grep -q sbatch page.sh || fail "the page has no commands"
timeout 240 bash -euo pipefail page.sh >page.log 2>&1 || { cat page.log >&2; fail "a command of the page failed"; }
for name in nodes meshes animation empty; do
  cmp "models/$name.glb" "$source/tests/golden/$name.glb" || fail "$name.glb isn't what export writes"
done
[ "$(grep -c '"status":"done"' summary.jsonl)" -eq 4 ] || fail "not all lines were exported"
[ "$(cat task-*.log | grep -c 'done already')" -ge 4 ] || fail "tasks of Slurm exported again"

# The tasks of an array export by themselves, a failed one fails the array, and a second array does what is left.
rm -r models task-*.log
echo '{"input": "scenes/late.orvo", "output": "models/late.glb"}' >>scenes.jsonl
submit() {
  timeout 60 sbatch --wait --array="1-$(grep -c '' scenes.jsonl)" --output=task-%a.log \
    "$source/share/slurm/vornel-array.sbatch" scenes.jsonl
}
if submit >sbatch.log 2>&1; then fail "an array with a missing scene went through"; fi
cmp models/animation.glb "$source/tests/golden/animation.glb" || fail "the array didn't export"
grep -q 'vornel: error: scenes/late.orvo' task-5.log || fail "the failed task doesn't say why"
cp scenes/empty.orvo scenes/late.orvo
submit >sbatch.log 2>&1 || fail "the second array failed"
[ "$(cat task-*.log | grep -c 'done already')" -eq 4 ] || fail "the second array exported again"
cmp models/late.glb "$source/tests/golden/empty.glb" || fail "the second array didn't do what was left"

# GNU parallel tells how many lines failed.
echo '{"input": "scenes/never.orvo", "output": "models/never.glb"}' >>scenes.jsonl
failed=0
"$source/share/parallel/vornel-parallel.sh" scenes.jsonl --jobs 2 >parallel.log 2>&1 || failed=$?
[ "$failed" -eq 1 ] || fail "GNU parallel ended with $failed"
if find models -name '.vornel-*' | grep -q .; then fail "staging directories stayed"; fi
