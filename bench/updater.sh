#!/usr/bin/env bash
# The AssemblyInfo updater over 5,000 files (500 with --quick) on tmpfs, against a C program doing
# read, temporary file, rename for the same files (the floor) and against `find | xargs sed -i -E`.
# Each run starts from a fresh copy of the tree (not timed); the three results must be identical.
# shellcheck source=bench/common.sh
source "$(dirname "$0")/common.sh"
n=$(pairs_or 5)
count=$(( quick ? 500 : 5000 ))
fast="${TMPDIR:-/tmp}"
if [ "$(stat -f -c %T /dev/shm 2>/dev/null)" = tmpfs ] && [ -w /dev/shm ]; then fast=/dev/shm; fi
mem=$(mktemp -d "$fast/marrowby-bench-XXXXXX")
cleanup_dirs+=("$mem")
make_tree "$mem/template" "$count"
updater_project "$work/p.mbproj" "$mem/tree" false
fresh() { rm -rf "$mem/tree" && cp -a "$mem/template" "$mem/tree"; }

host=() floor=() sed=()
for ((i = 0; i < n; i++)); do
  fresh
  m=$(measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" \
    run "$work/p.mbproj")
  host+=("${m% *}")
  if [ "$i" -eq 0 ]; then
    cp -a "$mem/tree" "$mem/by-host"
    grep -q 'AssemblyVersion("2.0.0.1")' "$mem/by-host/Group0/Project0/Properties/AssemblyInfo.cs"
  fi
  fresh
  m=$(measure -- "$tools/rewrite" "$mem/tree" "${stamp_plain[@]}")
  floor+=("${m% *}")
  [ "$i" -gt 0 ] || diff -r "$mem/by-host" "$mem/tree" >&2
  fresh
  m=$(measure -- sh -c 'root=$1; shift; find "$root" -type f -iname "*.cs" -print0 | xargs -0 sed -i -E "$@"' \
    sh "$mem/tree" "${stamp_sed[@]}")
  sed+=("${m% *}")
  [ "$i" -gt 0 ] || diff -r "$mem/by-host" "$mem/tree" >&2
done
t=$(median "${host[@]}") f=$(median "${floor[@]}") s=$(median "${sed[@]}")
row "AssemblyInfo updater, $count files, $(fs_type "$mem")" "$(fmt %.3f "$t") s" \
  "C read→temp→rename $(fmt %.3f "$f") s; \`sed -i -E\` $(fmt %.3f "$s") s" \
  "$(fmt %.2f "$t / $f")× C, $(fmt %.2f "$s / $t")× faster than sed" "≤ 1.30× C, ≥ 1.5× faster than sed" \
  "$(yes_no "$t / $f <= 1.3 && $s / $t >= 1.5")"
