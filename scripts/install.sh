#!/usr/bin/env bash
# Installs what the build and the tests need on a fresh Debian 12 machine. Does nothing where it is all there.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(g++ clang cmake ninja-build ccache nodejs npm chromium
          rapidjson-dev libfast-float-dev libcli11-dev libfmt-dev libglu1-mesa-dev libtsl-ordered-map-dev
          libassimp-dev libpng-dev
          libgtest-dev libgmock-dev libbenchmark-dev)

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

# The validator and the viewer of the tests, at the versions of the lock file.
if [ "${1:-}" = --with-npm ] && ! [ tests/web/node_modules/.package-lock.json -nt tests/web/package-lock.json ]; then
  npm --prefix tests/web ci --no-audit --no-fund --loglevel=error
fi
