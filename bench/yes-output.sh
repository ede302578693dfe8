#!/usr/bin/env bash
# A build step whose tool is `yes | head -c 200M` (20M with --quick): 2-byte lines as fast as a pipe
# carries them, against the pipe alone. Memory must stay flat and the host keep up.
# shellcheck source=bench/common.sh
source "$(dirname "$0")/common.sh"
n=$(pairs_or 3)
size=$(( quick ? 20 : 200 ))
printf '#!/bin/sh\nyes | head -c %sM\n' "$size" >"$work/tool"
chmod +x "$work/tool"
use_program_step "$work/tool"
program_step | write_project "$work/p.mbproj"

host=() rss=() base=()
for ((i = 0; i < n; i++)); do
  m=$(measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" \
    run "$work/p.mbproj")
  host+=("${m% *}") rss+=("${m#* }")
  m=$(measure -- sh -c "yes | head -c ${size}M")
  base+=("${m% *}")
done
t=$(median "${host[@]}") r=$(median "${rss[@]}") b=$(median "${base[@]}")
mb_s=$(calc "$size * 1.048576 / $t")
row "\`yes | head -c ${size}M\` as a tool" \
  "$(fmt %.2f "$t") s, $(fmt %.0f "$mb_s") MB/s, RSS $(human_kb "$r")" \
  "the pipe alone $(fmt %.3f "$b") s" "$(fmt %.0f "$t / $b")×" "RSS < 32 MB, ≥ 100 MB/s" \
  "$(yes_no "$r < 32768 && $mb_s >= 100")"
