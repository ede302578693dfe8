#!/usr/bin/env bash
# The main job: installs what is needed, builds everything and runs the example build project
# end to end on Mono's tools.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
dir=$(bash "$root/scripts/build.sh")
work="$dir/example-run"
rm -rf "$work"
mkdir -p "$work"
"$dir/marrowby" setup-mono --dir "$work/mono"
"$dir/marrowby" --registry "$work/mono/registry.reg" --options "$work/options.xml" \
  run "$root/examples/hello/hello.mbproj" --var "OUT=$work/out" --log "$work/build.log" \
  --junit "$work/report.xml"
echo "main job: outputs in $work/out, build log $work/build.log, report $work/report.xml"
