#!/usr/bin/env bash
# Builds and runs the whole test suite (unit and end-to-end, on the real Mono tools).
# Usage: scripts/test.sh [--sanitize]   (--sanitize: the AddressSanitizer + UBSan build)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
# The browser tests' packages, exactly as locked.
(cd "$root/tests/browser" && npm ci --no-audit --no-fund --loglevel=error)
dir=$(bash "$root/scripts/build.sh" "$@")
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$dir" --output-on-failure -j2 --timeout 600
