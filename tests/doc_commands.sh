#!/usr/bin/env bash
# doc_commands.sh SOURCE BIN: runs every line of the ```sh blocks of README and user guide, in their order, as a reader
# would who types them in the project's folder.
set -euo pipefail
source=$1 bin=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ln -s "$source/examples" "$source/scripts" "$work"
cd "$work"
export PATH=$bin:$PATH XDG_CONFIG_HOME=$work/config

count=0
for page in README.md docs/user-guide.md; do
  while IFS= read -r line; do
    [ -n "$line" ] || continue
    count=$((count + 1))
    (eval "$line") >out.txt 2>&1 </dev/null || { echo "$page: $line"; cat out.txt; exit 1; }
  done < <(awk '/^```sh$/ { inside = 1; next } /^```$/ { inside = 0 } inside' "$source/$page")
done
[ "$count" -ge 10 ] || { echo "only $count commands were found"; exit 1; }
echo "$count commands ran"
