#!/usr/bin/env bash
# The AssemblyInfo updater over 5,000 files (500 with --quick) on the disk ($TMPDIR) with
# BackupFiles true, the default, against the same run without backups. Fresh trees, not timed.
# shellcheck source=bench/common.sh
source "$(dirname "$0")/common.sh"
n=$(pairs_or 3)
count=$(( quick ? 500 : 5000 ))
make_tree "$work/template" "$count"
updater_project "$work/with.mbproj" "$work/tree" true
updater_project "$work/without.mbproj" "$work/tree" false
fresh() { rm -rf "$work/tree" && cp -a "$work/template" "$work/tree" && sync -f "$work"; }

with=() without=()
for ((i = 0; i < n; i++)); do
  fresh
  m=$(measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" \
    run "$work/with.mbproj")
  with+=("${m% *}")
  grep -q 'AssemblyVersion("2.0.0.1")' "$work/tree/Group0/Project0/Properties/AssemblyInfo.cs"
  fresh
  m=$(measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" \
    run "$work/without.mbproj")
  without+=("${m% *}")
done
t=$(median "${with[@]}") b=$(median "${without[@]}")
row "the same with \`BackupFiles\` true, $(fs_type "$work")" "$(fmt %.3f "$t") s" \
  "without backups $(fmt %.3f "$b") s" "$(fmt %.2f "$t / $b")×" "≤ 1.50×" "$(yes_no "$t / $b <= 1.5")"
