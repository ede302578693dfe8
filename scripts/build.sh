#!/usr/bin/env bash
# Configures and builds the project. Usage: scripts/build.sh [--sanitize]   (prints the build dir)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dir="$root/build"
flags=(-DMARROWBY_WERROR=ON)
# ccache, when the machine has it, makes the second build of CI (and every rebuild) cheap.
if command -v ccache >/dev/null; then flags+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
if [ "${1:-}" = "--sanitize" ]; then
  dir="$root/build-asan"
  flags+=(-DMARROWBY_SANITIZE=ON -DMARROWBY_BENCH=OFF)
fi
cmake -S "$root" -B "$dir" -G Ninja "${flags[@]}" >&2
ninja -C "$dir" >&2
echo "$dir"
