#!/usr/bin/env bash
# Runs every whole-process benchmark and prints one Markdown table, the machine above it.
# Usage: bench/run-all.sh [--build DIR] [--quick] [-n PAIRS]
#   --build DIR  the build folder holding marrowby (default: build)
#   --quick      CI-sized inputs (a tenth of the work)
#   -n PAIRS     host/baseline pairs per benchmark (default: each benchmark's own, 3 mostly)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
args=("$@")
tmp=${TMPDIR:-/tmp}
fast=$tmp
if [ "$(df --output=fstype /dev/shm 2>/dev/null | tail -n 1 | tr -d ' ')" = tmpfs ]; then fast=/dev/shm; fi
fs() { df --output=fstype "$1" | tail -n 1 | tr -d ' '; }
cpu=$(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo)
echo "Machine: $cpu, $(nproc) cores, $(awk '/^MemTotal/ { printf "%.0f GB RAM", $2 / 1048576 }' /proc/meminfo), Linux $(uname -r); temp folders: $tmp ($(fs "$tmp")), $fast ($(fs "$fast")); load average at start $(cut -d' ' -f1-3 /proc/loadavg); $(date -u '+%Y-%m-%d %H:%M UTC')"
echo
echo "| work | host | baseline | ratio | target | met? |"
echo "|---|---|---|---|---|---|"
for bench in tool-output yes-output validate updater updater-backups steps startup; do
  bash "$here/$bench.sh" "${args[@]}"
done
