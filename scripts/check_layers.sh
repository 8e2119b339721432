#!/usr/bin/env bash
# Holds who may include whom: each folder names the folders of ours that its files may include.
set -euo pipefail
cd "$(dirname "$0")/.."

plug_in='host document geometry materials animation saver options'
declare -A allowed=(
  [host]='host'
  [document]="$plug_in" [geometry]="$plug_in" [materials]="$plug_in" [animation]="$plug_in" [saver]="$plug_in"
  [options]="$plug_in"
  [headless]='host headless'
  [readers]='host headless readers'
  [importer]='host headless readers importer'
  [tool]='host headless readers tool'
)

faults=0
for folder in "${!allowed[@]}"; do
  while IFS=: read -r file line text; do
    included=$(sed -E 's/^#include "([^/"]*).*/\1/' <<<"$text")
    case " ${allowed[$folder]} " in
      *" $included "*) ;;
      *) echo "$file:$line: $folder/ may not include $included/"; faults=1 ;;
    esac
  done < <(grep -rnE --include='*.h' --include='*.cpp' '^#include "' "$folder" || true)
done
exit "$faults"
