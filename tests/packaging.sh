#!/usr/bin/env bash
# packaging.sh SOURCE BUILD: installs the build under a prefix, builds the example against it, packs it, and installs
# and removes the packages in a root of their own. Nothing of the system is touched.
set -euo pipefail
source=$1 build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "packaging: $*" >&2; exit 1; }

# The installation works wherever it is moved to as a whole.
cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
vornel=$work/moved/bin/vornel
"$vornel" --version | grep -q 'built with' || fail "--version says nothing of the build"
"$vornel" export "$source/examples/room.orvo" -o "$work/room.glb" --preview "$work/room.html" -q
[ -s "$work/room.html" ] || fail "the installed command made no preview page"
if [ -f "$source/../shared/models/stl/Wuson.stl" ]; then
  "$vornel" export "$source/../shared/models/stl/Wuson.stl" -o "$work/wuson.glb" -q
fi

# A program of its own, built against what is installed, writes what the command writes.
cmake -S "$source/examples/embed" -B "$work/embed" -DCMAKE_PREFIX_PATH="$work/moved" >/dev/null
cmake --build "$work/embed" >/dev/null
"$work/embed/export_tetrahedron" "$work/tetrahedron.glb" 2>/dev/null
"$vornel" export "$source/tests/tetrahedron.orvo" -o "$work/same.glb" -q
cmp "$work/tetrahedron.glb" "$work/same.glb" || fail "the example's scene came out as another file"

# Manual and completion name every flag of every command.
man --warnings -l "$work/moved/share/man/man1/vornel.1" >"$work/man.txt" 2>"$work/man.err"
[ ! -s "$work/man.err" ] || fail "the manual page: $(cat "$work/man.err")"
source_completion() { PATH=$work/moved/bin:$PATH; source "$work/moved/share/bash-completion/completions/vornel"; }
complete_words() (
  source_completion
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _vornel
  printf '%s\n' "${COMPREPLY[@]}"
)
for command in $("$vornel" --help | sed -nE 's/^  ([a-z][a-z-]+) .*/\1/p'); do
  complete_words vornel "${command%?}" | grep -qx -- "$command" || fail "no completion for $command"
  for flag in $("$vornel" "$command" --help | grep -oE '^  (-., ?)?--[a-z0-9-]+' | grep -oE -- '--[a-z0-9-]+'); do
    grep -q -- "$flag" "$work/man.txt" || fail "the manual page lacks $flag of $command"
    complete_words vornel "$command" "$flag" | grep -qx -- "$flag" || fail "no completion for $flag of $command"
  done
done
complete_words vornel export --indices a | grep -qx auto || fail "no completion for the words of --indices"

# The packages install, work and leave nothing behind. The root has an own record of what is installed, so what the
# packages depend on is not looked for there.
(cd "$build" && cpack -G DEB -B "$work/packages" >/dev/null)
root=$work/root
mkdir -p "$root/var/lib/dpkg/"{updates,info}
touch "$root/var/lib/dpkg/"{status,available}
package() { dpkg --root="$root" --log=/dev/null --force-depends --force-not-root --force-script-chrootless "$@" >/dev/null 2>&1; }
package -i "$work"/packages/*.deb || fail "the packages can't be installed"
"$root/usr/bin/vornel" export "$source/examples/room.orvo" -o "$work/again.glb" -q
cmp "$work/room.glb" "$work/again.glb" || fail "the packaged command writes another file"
for part in lib/vornel/vornel.zy libexec/vornel/vornel-import share/vornel/preview.html share/man/man1/vornel.1* \
            include/vornel/headless/host.h lib/cmake/vornel/vornelConfig.cmake; do
  ls "$root"/usr/$part >/dev/null || fail "the packages lack $part"
done
package -r vornel-dev vornel || fail "the packages can't be removed"
left=$(find "$root" -path "$root/var/lib/dpkg" -prune -o -type f -print)
[ -z "$left" ] || fail "removing the packages leaves $left"
echo "packaging: all is well"
