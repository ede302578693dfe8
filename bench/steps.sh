#!/usr/bin/env bash
# A build of 500 steps (50 with --quick) each running /bin/true, against a C loop that starts
# /bin/true as often with posix_spawn and waits for it. The same loop reading each program's
# output through two pipes, as the host does, is timed too and shown beside the host: what
# capturing output costs before any work of the host's own.
# shellcheck source=bench/common.sh
source "$(dirname "$0")/common.sh"
n=$(pairs_or 5)
count=$(( quick ? 50 : 500 ))
use_program_step /bin/true
for ((i = 0; i < count; i++)); do program_step; done | write_project "$work/p.mbproj"

host=() base=() piped=()
for ((i = 0; i < n; i++)); do
  m=$(measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" \
    run "$work/p.mbproj")
  host+=("${m% *}")
  # The same command line the step gives the program: /bin/true does more with one argument
  # (it sets up its locale) than with none.
  m=$(measure -- "$tools/spawnloop" "$count" /bin/true "-buildfile:$work/default.build")
  base+=("${m% *}")
  m=$(measure -- "$tools/spawnloop" --pipes "$count" /bin/true "-buildfile:$work/default.build")
  piped+=("${m% *}")
done
t=$(median "${host[@]}") b=$(median "${base[@]}") p=$(median "${piped[@]}")
over="$(fmt %.0f "($t - $b) * 1e6 / $count") µs per step over the loop"
row "$count steps of \`/bin/true\`" \
  "$(fmt %.3f "$t") s ($over; the loop reading output through pipes: $(fmt %.2f "$p / $b")×)" \
  "C \`posix_spawn\` loop $(fmt %.3f "$b") s" "$(fmt %.2f "$t / $b")×" "≤ 1.05×" "$(yes_no "$t / $b <= 1.05")"
