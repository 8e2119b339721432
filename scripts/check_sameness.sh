#!/usr/bin/env bash
# Exports random scenes from several builds, under several locales, in two working directories, and compares the
# SHA-256 of every file and log that is written.
#
#     check_sameness.sh [BUILD_DIRECTORY...]
#
# Without arguments it makes the builds: g++ and clang, -O0 and -O3. Those that are given hold export_under_locale, the
# first one the command too.
set -euo pipefail
export LC_ALL=C
cd "$(dirname "$0")/.."
root=$PWD
scenes=200
work=$root/build/sameness
locales=(C de_DE.UTF-8 tr_TR.UTF-8)
# What the locales make of 1.5 and of an i in capitals.
declare -A probes=([C]="1.5 I" [de_DE.UTF-8]="1,5 I" [tr_TR.UTF-8]="1,5 İ")

builds=("$@")
if [ $# -eq 0 ]; then
  for build in "release release Release" "debug debug Debug" "clang clang Release" "clang clang-debug Debug"; do
    read -r preset directory type <<<"$build"
    cmake --preset "$preset" -B "build/$directory" -DCMAKE_BUILD_TYPE="$type" >/dev/null
    ninja -C "build/$directory" export_under_locale
    builds+=("build/$directory")
  done
  ninja -C build/release vornel
fi

fail() {
  echo "$*" >&2
  exit 1
}

[ "$(cat /proc/sys/kernel/randomize_va_space)" = 2 ] || fail "addresses aren't randomised here"
rm -rf "$work"
mkdir -p "$work/locales"
for locale in "${locales[@]:1}"; do
  localedef -i "${locale%.*}" -f UTF-8 "$work/locales/$locale"
done
export LOCPATH=$work/locales
export ASAN_OPTIONS=detect_leaks=0  # the C library keeps the path of its locales
places=("$work/a" "$work/a longer, deeper pläce/b")
for place in "${places[@]}"; do
  python3 scripts/make_random_scenes.py "$scenes" "$place/scenes"
done

# Of everything below a directory.
hash_files() {
  (cd "$1" && find . -type f -print0 | sort -z | xargs -0 sha256sum)
}

# export_all BUILD LOCALE PLACE leaves PLACE/out, PLACE/hashes and PLACE/probe.
export_all() {
  cd "$3"
  rm -rf out
  LC_ALL=$2 "$root/$1/bin/export_under_locale" out scenes/*.orvo >probe
  [[ "$(cat probe)" = "${probes[$2]} 0x"* ]] || fail "$1 doesn't run under $2: $(cat probe)"
  cat probe >>"$work/probes"
  hash_files out >hashes
}

# compare HASHES EXPECTED WHAT names the files in which a run differs from the first one.
compare() {
  local differing
  differing=$(diff "$2" "$1" | sed -n 's/^[<>] [0-9a-f]* *//p' | sort -u) || true
  [ -z "$differing" ] || fail "$3: other than in $work/first: $(wc -l <<<"$differing") files, $(head -3 <<<"$differing" | xargs)"
}

for build in "${builds[@]}"; do
  : >"$work/probes"
  for locale in "${locales[@]}"; do
    pids=()
    for place in "${places[@]}"; do
      (export_all "$build" "$locale" "$place") &
      pids+=($!)
    done
    for pid in "${pids[@]}"; do wait "$pid"; done
    [ -e "$work/first" ] || { mv "${places[0]}/out" "$work/first" && cp "${places[0]}/hashes" "$work/expected"; }
    for place in "${places[@]}"; do compare "$place/hashes" "$work/expected" "$build under $locale in $place"; done
  done
  [ "$(cut -d' ' -f3 "$work/probes" | sort -u | wc -l)" -gt 1 ] || fail "$build has one address in all runs"
  echo "$build: ${#locales[@]} locales, ${#places[@]} working directories: the same"
done

# A set of scenes that doesn't hold what can differ shows nothing.
for key in animations skins textures KHR_texture_transform TANGENT COLOR_0 cameras; do
  [ "$(grep -l "\"$key\"" "$work"/first/*.gltf/*.gltf | wc -l)" -ge 20 ] || fail "too few scenes with $key"
done

# The command, but for the log.
cd "${places[1]}"
rm -rf out
for scene in scenes/*.orvo; do
  for suffix in .glb .gltf; do
    name=$(basename "$scene" .orvo)$suffix
    mkdir -p "out/$name"
    printf '%s\0' "$scene" -o "out/$name/$name"
  done
done | LC_ALL=tr_TR.UTF-8 xargs -0 -P "$(nproc)" -n 3 "$root/${builds[0]}/bin/vornel" export --quiet 2>"$work/messages" ||
  fail "the command: $(tail -1 "$work/messages")"
hash_files out >hashes
compare hashes <(grep -v '/log$' "$work/expected") "the command"
echo "the command: the same"
