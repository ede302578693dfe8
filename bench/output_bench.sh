#!/bin/sh
# Tool output through `marrowby run` against the same bytes through plain pipes: throughput and
# the host's peak memory for 100-byte lines, the same with --log, and 2-byte lines (`yes`).
# Usage: bench/output_bench.sh [path/to/marrowby] [megabytes]. The time ratio is the host's time over
# the baseline's (1.00: as fast). Timings are wall clock: run on a quiet machine.
set -eu
MARROWBY=${1:-build/marrowby}
MB=${2:-200}
BYTES=$((MB * 1024 * 1024))
command -v /usr/bin/time >/dev/null || { echo "needs /usr/bin/time (package time)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
# A home of its own: nothing of the user's is read or written.
for d in home home/.config home/.local/share home/.cache home/.local/state mono-registry sdk/Bin fw/v4.0.30319; do
  mkdir -p "$work/$d"
done
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share"
export XDG_CACHE_HOME="$work/home/.cache" XDG_STATE_HOME="$work/home/.local/state"
export MONO_REGISTRY_PATH="$work/mono-registry"
printf 'Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\.NETFramework]\r\n"InstallRoot"="%s/fw/"\r\n"sdkInstallRootv4.0"="%s/sdk/"\r\n' \
  "$work" "$work" >"$work/registry.reg"
# The "tool" is whatever BENCH_TOOL says, run by the shell.
printf '#!/bin/sh\nexec /bin/sh -c "$BENCH_TOOL"\n' >"$work/sdk/Bin/sn.exe"
chmod +x "$work/sdk/Bin/sn.exe"
cat >"$work/p.mbproj" <<EOF
<?xml version="1.0" encoding="UTF-8"?>
<MarrowbyProject version="1">
  <Actions>
    <Action class="TSNGenericSN">
      <Property name="Options">-x</Property>
      <Property name="StartDir">%ProjectDir%</Property>
    </Action>
  </Actions>
</MarrowbyProject>
EOF

line99=$(printf '%099d' 0)
LINES100="yes $line99 | head -c $BYTES"
YES2="yes | head -c $BYTES"

# Runs a command with output to /dev/null; prints "seconds maxRSS-KB".
measure() {
  /usr/bin/time -f '%e %M' -o "$work/time" sh -c "$1" >/dev/null 2>&1 || true
  cat "$work/time"
}
host() {
  BENCH_TOOL=$1 measure "\"$MARROWBY\" --registry \"$work/registry.reg\" --options \"$work/options.xml\" run \"$work/p.mbproj\" $2"
}
rate() { awk -v mb="$MB" -v s="$1" 'BEGIN { printf "%.0f MB/s", (s > 0 ? mb / s : 0) }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }'; }

set -- $(host "$LINES100" ""); hs=$1; hr=$2
set -- $(measure "$LINES100 | sed 's/^/    /'"); bs=$1
printf '%-34s host %-10s %6s KB RSS | cat|sed %-10s | time ratio %s\n' "100-byte lines, ${MB} MB" \
  "$(rate "$hs")" "$hr" "$(rate "$bs")" "$(ratio "$hs" "$bs")"

set -- $(host "$LINES100" "--log $work/build.log"); ls=$1; lr=$2
printf '%-34s host %-10s %6s KB RSS | no --log %-9s | time ratio %s\n' "the same with --log FILE" \
  "$(rate "$ls")" "$lr" "$(rate "$hs")" "$(ratio "$ls" "$hs")"
rm -f "$work/build.log"

set -- $(host "$YES2" ""); ys=$1; yr=$2
set -- $(measure "$YES2"); ps=$1
printf '%-34s host %-10s %6s KB RSS | pipe    %-10s | time ratio %s\n' "yes | head -c ${MB}M" \
  "$(rate "$ys")" "$yr" "$(rate "$ps")" "$(ratio "$ys" "$ps")"
