#!/usr/bin/env bash
# `marrowby validate` of projects of 10k and 100k steps (1k and 10k with --quick): seconds and max
# RSS, against the project file's own size. The memory per step is counted beyond the file's bytes
# and beyond what validating a one-step project takes. Prints two rows.
# shellcheck source=bench/common.sh
source "$(dirname "$0")/common.sh"
n=$(pairs_or 3)
use_program_step /bin/true

validate() {
  measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" validate "$1"
}

validate_steps 1 | write_project "$work/one.mbproj"
one=()
for ((i = 0; i < n; i++)); do m=$(validate "$work/one.mbproj"); one+=("${m#* }"); done
floor=$(median "${one[@]}")

for count in $(( quick ? 1000 : 10000 )) $(( quick ? 10000 : 100000 )); do
  validate_steps "$count" | write_project "$work/p.mbproj"
  size=$(stat -c %s "$work/p.mbproj")
  secs=() rss=()
  for ((i = 0; i < n; i++)); do
    m=$(validate "$work/p.mbproj")
    secs+=("${m% *}") rss+=("${m#* }")
  done
  t=$(median "${secs[@]}") r=$(median "${rss[@]}")
  per=$(calc "($r - $floor - $size / 1024) * 1024 / $count")
  target="≤ 1 KB RSS per step beyond the file"
  met="$per <= 1024"
  if [ "$count" -ge 100000 ]; then target="$target, < 0.5 s"; met="$met && $t < 0.5"; fi
  row "\`validate\` of $((count / 1000))k steps" \
    "$(fmt %.3f "$t") s, RSS $(human_kb "$r") ($(fmt %.1f "$per / 1024") KB per step beyond the file)" \
    "file $(human_kb $((size / 1024)))" "RSS $(fmt %.1f "$r * 1024 / $size")× the file" \
    "$target" "$(yes_no "$met")"
done
