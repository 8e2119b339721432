#!/usr/bin/env bash
# Installs what the build and the tests need on a fresh Debian 12 machine. Does nothing where it is all there.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(g++ clang libclang-rt-14-dev cmake ninja-build ccache nodejs npm chromium
          rapidjson-dev libfast-float-dev libcli11-dev libfmt-dev libglu1-mesa-dev libtsl-ordered-map-dev libxxhash-dev
          libjemalloc-dev libassimp-dev libseccomp-dev libpng-dev pkg-config
          libgtest-dev libgmock-dev libbenchmark-dev)
# What the tests with other programs need besides: a scheduler and a runner of jobs, a counter of instructions, the
# reader of manual pages, the maker of packages, the sources of locales, static checks.
if [ "${1:-}" = --with-npm ]; then packages+=(slurm-wlm munge parallel valgrind python3 man-db dpkg-dev locales cppcheck); fi
if [ "${1:-}" = --with-coverage ]; then packages+=(gcovr python3); fi
if [ "${1:-}" = --with-lint ]; then packages+=(cppcheck clang-tidy); fi

missing=()
for package in "${packages[@]}"; do
  # A tool may have come another way than as Debian's package.
  case "$package" in
    nodejs) command -v node >/dev/null && continue ;;
    npm) command -v npm >/dev/null && continue ;;
  esac
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if [ "${#missing[@]}" -gt 0 ]; then
  run=()
  [ "$(id -u)" -eq 0 ] || run=(sudo)
  "${run[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${run[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# Puts a folder's npm packages in place, at the versions of its lock file.
install_npm() {
  [ "$1/node_modules/.package-lock.json" -nt "$1/package-lock.json" ] ||
    (cd "$1" && npm ci --no-audit --no-fund --loglevel=error)
}

# The viewer that the build packs into preview pages.
install_npm preview
# The validator and the viewer of the tests.
if [ "${1:-}" = --with-npm ]; then install_npm tests/web; fi
