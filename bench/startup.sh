#!/usr/bin/env bash
# `marrowby actions` (start, load the package, list its actions), against /bin/true: medians of
# 50 runs of each, alternately (10 with --quick).
# shellcheck source=bench/common.sh
source "$(dirname "$0")/common.sh"
n=$(pairs_or $(( quick ? 10 : 50 )))
host=() base=()
for ((i = 0; i < n; i++)); do
  m=$(measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" actions)
  host+=("${m% *}")
  m=$(measure -- /bin/true)
  base+=("${m% *}")
done
t=$(median "${host[@]}") b=$(median "${base[@]}")
row "\`marrowby actions\` startup" "$(fmt %.2f "$t * 1000") ms ($(fmt %.2f "($t - $b) * 1000") ms over \`/bin/true\`)" "\`/bin/true\` $(fmt %.2f "$b * 1000") ms" \
  "$(fmt %.1f "$t / $b")×" "≤ 2 ms" "$(yes_no "$t <= 0.002")"
