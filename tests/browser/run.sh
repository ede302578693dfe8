#!/usr/bin/env bash
# Runs the browser tests of the property editor (ctest: browser_editor). Fails, never skips, when
# Node, the npm packages or Chromium are missing, and says how to install them.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
missing=()
command -v node >/dev/null 2>&1 || missing+=("Node.js: apt-get install nodejs (or bash scripts/setup.sh)")
[ -x "${CHROMIUM:-/usr/bin/chromium}" ] || missing+=("Chromium: apt-get install chromium (or bash scripts/setup.sh)")
[ -d "$here/node_modules/playwright-core" ] || missing+=("playwright-core: cd tests/browser && npm ci")
if [ ${#missing[@]} -gt 0 ]; then
  echo "browser tests cannot run; missing:" >&2
  printf '  %s\n' "${missing[@]}" >&2
  exit 1
fi
cd "$here"
exec node --test --test-concurrency=1 editor.test.mjs
