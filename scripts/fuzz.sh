#!/usr/bin/env bash
# fuzz.sh [SECONDS] [NAME...]: builds the harnesses of fuzz/ and runs each for SECONDS, 60 unless told otherwise, from
# its kept corpus, as many at a time as there are cores. What is found goes into build/asan/found. Fails with the
# file that shows it when a harness finds a fault.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=60
if [[ "${1:-}" =~ ^[0-9]+$ ]]; then seconds=$1; shift; fi
names=("$@")
if [ "${#names[@]}" -eq 0 ]; then
  for source in fuzz/*_fuzzer.cpp; do names+=("$(basename "$source" _fuzzer.cpp)"); done
fi

cmake --preset asan >/dev/null
cmake --build --preset asan -- "${names[@]/%/_fuzzer}"

found=$PWD/build/asan/found
mkdir -p "$found"
# The files that harnesses write and read back a thousand times a second are kept off the disk where that can be had.
memory=/dev/shm
[ -w "$memory" ] || memory=${TMPDIR:-/tmp}
TMPDIR=$(mktemp -d "$memory/vornel_fuzz_XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# Inputs are small, and no harness needs a second or a gigabyte for one; sanitizers included.
run() {
  local name=$1 words=()
  mkdir -p "$found/$name"
  [ -f "fuzz/$name.dict" ] && words=("-dict=fuzz/$name.dict")
  if build/asan/bin/"${name}_fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -malloc_limit_mb=1024 -max_len=8192 -len_control=0 -print_final_stats=1 \
    -artifact_prefix="$found/$name-" "${words[@]}" "$found/$name" "fuzz/corpus/$name" >"$found/$name.log" 2>&1; then
    echo "$name: $(sed -n 's/^stat::number_of_executed_units: *//p' "$found/$name.log") inputs, no fault"
  else
    grep -E 'broken law|ERROR|runtime error|Assertion|SUMMARY|Test unit written' "$found/$name.log" |
      sed "s/^/$name: /" >&2
    return 1
  fi
}

status=0
jobs=$(nproc)
for name in "${names[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n || status=1; done
  run "$name" &
done
while [ -n "$(jobs -p)" ]; do wait -n || { code=$?; [ "$code" -eq 127 ] && break; status=1; }; done
exit "$status"
