#!/usr/bin/env bash
# A build step whose tool prints a lot: 200 MB of 100-byte lines (20 MB with --quick), the log to
# /dev/null, against the same lines indented by sed. With --log: the same run writing a log file too,
# against the run without it. Prints two rows.
# shellcheck source=bench/common.sh
source "$(dirname "$0")/common.sh"
n=$(pairs_or 5)
bytes=$(( quick ? 20000000 : 200000000 ))
mbytes=$(( bytes / 1000000 ))
printf '#!/bin/sh\nexec %s %s\n' "$tools/lines" "$bytes" >"$work/tool"
chmod +x "$work/tool"
use_program_step "$work/tool"
program_step | write_project "$work/p.mbproj"

host=() rss=() logged=() logrss=() base=()
for ((i = 0; i < n; i++)); do
  m=$(measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" \
    run "$work/p.mbproj")
  host+=("${m% *}") rss+=("${m#* }")
  m=$(measure -- sh -c "$tools/lines $bytes | sed 's/^/    /'")
  base+=("${m% *}")
  # A fresh log each time: replacing the last run's 200 MB file would time ext4 dropping it
  # and flushing the truncated file at close, not the host.
  rm -f "$work/build.log"
  m=$(measure -- "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" \
    run "$work/p.mbproj" --log "$work/build.log")
  logged+=("${m% *}") logrss+=("${m#* }")
done
# Every line reached the log: the run did the work it is timed for.
lines=$(grep -c 'compiling unit' "$work/build.log")
[ "$lines" -eq $((bytes / 100)) ] || { echo "the log holds $lines lines, not $((bytes / 100))" >&2; exit 1; }

t=$(median "${host[@]}") r=$(median "${rss[@]}") b=$(median "${base[@]}")
tl=$(median "${logged[@]}") rl=$(median "${logrss[@]}")
ratio=$(calc "$t / $b")
row "tool prints $mbytes MB of 100-byte lines, stdout to /dev/null" \
  "$(fmt %.2f "$t") s, $(fmt %.0f "$mbytes / $t") MB/s, RSS $(human_kb "$r")" \
  "\`lines | sed 's/^/    /'\` $(fmt %.2f "$b") s, $(fmt %.0f "$mbytes / $b") MB/s" \
  "$(fmt %.2f "$ratio")×" "≤ 1.00×, RSS < 32 MB" "$(yes_no "$ratio <= 1.0 && $r < 32768")"
ratio=$(calc "$tl / $t")
row "the same with \`--log FILE\`" \
  "$(fmt %.2f "$tl") s, $(fmt %.0f "$mbytes / $tl") MB/s, RSS $(human_kb "$rl")" \
  "without \`--log\` $(fmt %.2f "$t") s" "$(fmt %.2f "$ratio")×" "≤ 1.30×" "$(yes_no "$ratio <= 1.3")"
