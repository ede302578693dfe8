#!/usr/bin/env bash
# Counts the instructions the host spends per unit of work on a fixed small workload (callgrind,
# so the figure does not depend on the machine's load) and fails when one exceeds its budget in
# bench/perf-budget.json. A change that doubles the work per output line, per step or per file
# fails; a faster host passes and can tighten the budget with --update.
# Usage: scripts/perf-budget.sh [--update] [--build DIR]
#   --update   measure and rewrite the budget file (budget = measured x headroom)
#   --build    the build folder holding marrowby (default: build)
set -euo pipefail
update=0
rest=()
for arg in "$@"; do
  if [ "$arg" = --update ]; then update=1; else rest+=("$arg"); fi
done
set -- "${rest[@]+"${rest[@]}"}"
# shellcheck source=bench/common.sh
source "$(cd "$(dirname "$0")/.." && pwd)/bench/common.sh"
budget_file="$root/bench/perf-budget.json"
headroom=1.5
command -v valgrind >/dev/null || { echo "perf-budget: valgrind is not installed" >&2; exit 2; }

# ir ARGS...: the instructions marrowby executes for ARGS, its own process only: the programs it
# starts are not traced, and the supervisor it forks writes a profile of its own, not read here.
ir() {
  local out="$work/cg"
  rm -rf "$out" && mkdir "$out"
  sh -c 'echo $$ >"$1/pid"; shift; exec "$@"' sh "$out" \
    valgrind --tool=callgrind --trace-children=no --callgrind-out-file="$out/%p" -q \
    "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" "$@" \
    >"$out/stdout" 2>"$out/stderr" || {
    echo "perf-budget: marrowby $* failed:" >&2
    cat "$out/stderr" >&2
    exit 1
  }
  awk '/^summary:/ { print $2 }' "$out/$(cat "$out/pid")"
}

# per NAME UNITS BIG SMALL: records (BIG - SMALL) / UNITS as the figure of NAME.
names=() figures=()
per() { names+=("$1") figures+=("$(( ($3 - $4) / $2 ))"); }

# Output lines: a static tool printing 20,000 lines of 100 bytes against one printing none,
# without and with a log file.
lines=20000
for size in 0 $((lines * 100)); do
  printf '#!/bin/sh\nexec %s %s\n' "$tools/lines" "$size" >"$work/tool$size"
  chmod +x "$work/tool$size"
done
use_program_step "$work/tool0"
program_step | write_project "$work/out.mbproj"
empty=$(ir run "$work/out.mbproj")
empty_log=$(ir run "$work/out.mbproj" --log "$work/build.log")
mb options set NAnt NAntLocation "$work/tool$((lines * 100))" >/dev/null
full=$(ir run "$work/out.mbproj")
full_log=$(ir run "$work/out.mbproj" --log "$work/build.log")
[ "$(grep -c 'compiling unit' "$work/build.log")" -ge "$lines" ] || {
  echo "perf-budget: the log lacks lines of the tool" >&2
  exit 1
}
per output_line "$lines" "$full" "$empty"
per log_line "$lines" "$full_log" "$empty_log"

# Steps: 50 steps of /bin/true against one.
mb options set NAnt NAntLocation /bin/true >/dev/null
program_step | write_project "$work/one.mbproj"
for ((i = 0; i < 50; i++)); do program_step; done | write_project "$work/steps.mbproj"
per step 49 "$(ir run "$work/steps.mbproj")" "$(ir run "$work/one.mbproj")"

# Loading and validating: 2,000 steps against none.
validate_steps 2000 | write_project "$work/big.mbproj"
: | write_project "$work/empty.mbproj"
per validate_step 2000 "$(ir validate "$work/big.mbproj")" "$(ir validate "$work/empty.mbproj")"

# The AssemblyInfo updater: 200 files against an empty folder.
make_tree "$work/tree" 200
mkdir "$work/none"
updater_project "$work/stamp.mbproj" "$work/tree" false
updater_project "$work/nothing.mbproj" "$work/none" false
per updater_file 200 "$(ir run "$work/stamp.mbproj")" "$(ir run "$work/nothing.mbproj")"
grep -q '2.0.0.1' "$work/tree/Group1/Project150/Properties/AssemblyInfo.cs" || {
  echo "perf-budget: the updater changed nothing" >&2
  exit 1
}

# Startup: the whole of `marrowby actions`.
per startup 1 "$(ir actions)" 0

if [ "$update" = 1 ]; then
  {
    printf '{\n  "headroom": %s,\n' "$headroom"
    for i in "${!names[@]}"; do
      sep=","
      [ "$i" -lt $((${#names[@]} - 1)) ] || sep=""
      printf '  "%s": {"measured": %s, "budget": %s}%s\n' "${names[$i]}" "${figures[$i]}" \
        "$(awk "BEGIN { printf \"%d\", ${figures[$i]} * $headroom }")" "$sep"
    done
    printf '}\n'
  } >"$budget_file"
  echo "perf-budget: wrote $budget_file"
fi

# budget NAME: the budget of NAME in the budget file.
budget() {
  sed -n "s/.*\"$1\": {\"measured\": [0-9]*, \"budget\": \([0-9]*\)}.*/\1/p" "$budget_file"
}
failed=0
printf '%-14s %14s %14s %8s\n' "instructions" "measured" "budget" "use"
for i in "${!names[@]}"; do
  limit=$(budget "${names[$i]}")
  [ -n "$limit" ] || { echo "perf-budget: no budget for ${names[$i]} in $budget_file" >&2; exit 2; }
  verdict=""
  if [ "${figures[$i]}" -gt "$limit" ]; then verdict="  OVER BUDGET"; failed=1; fi
  # A budget far above the figure would let a doubling through: say so, so that it is tightened.
  if [ $(( figures[i] * 3 )) -lt "$limit" ]; then verdict="  (far under: tighten with --update)"; fi
  printf '%-14s %14s %14s %7s%%%s\n' "per ${names[$i]}" "${figures[$i]}" "$limit" \
    "$(( figures[i] * 100 / limit ))" "$verdict"
done
if [ "$failed" = 1 ]; then
  echo "perf-budget: more instructions than the budget; if the extra work is meant, rerun with --update" >&2
  exit 1
fi
echo "perf-budget: within budget"
