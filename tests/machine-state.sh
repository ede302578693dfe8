#!/usr/bin/env bash
# Snapshot of what the test suite must leave as it found it: the user's marrowby and Mono files, Mono's
# machine-wide registry and key store, the names in the Mono GAC and the test folders in the temp dir.
# Usage: machine-state.sh record FILE | machine-state.sh compare FILE
set -euo pipefail
snapshot() {
  local home=${HOME:-/root} tmp=${TMPDIR:-/tmp}
  local config=${XDG_CONFIG_HOME:-$home/.config} data=${XDG_DATA_HOME:-$home/.local/share}
  for p in "$config/marrowby" "$data/marrowby" "$home/.mono" "$config/.mono" /etc/mono/registry \
           /usr/share/.mono; do
    # Name, kind, size and modification time of everything there: a rewrite shows as a new time.
    [ -e "$p" ] && find "$p" -printf '%p %y %s %T@\n' 2>/dev/null
  done
  # The GAC itself changes while a test installs into it; only the names must be the same after.
  find /usr/lib/mono/gac -mindepth 1 -maxdepth 1 -printf 'gac %f\n' 2>/dev/null
  find "$tmp" -mindepth 1 -maxdepth 1 -name 'marrowby-*' -printf 'tmp %f\n' 2>/dev/null
} 
case "${1:-}" in
  record) snapshot | sort > "$2" ;;
  compare)
    if ! diff <(cat "$2") <(snapshot | sort); then
      echo "the test suite changed files outside its temporary folders (< before, > after)"
      exit 1
    fi
    echo "nothing outside the temporary folders changed" ;;
  *) echo "usage: $0 record FILE | compare FILE" >&2; exit 2 ;;
esac
