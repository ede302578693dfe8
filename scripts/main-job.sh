#!/usr/bin/env bash
# The main job: installs what is needed, builds everything and runs the example build project
# end to end on Mono's tools. The example runs on a copy, so the checkout stays as it is.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/setup.sh"
dir=$(bash "$root/scripts/build.sh")
work="$dir/example-run"
rm -rf "$work"
mkdir -p "$work"
cp -r "$root/examples/hello" "$work/hello"
marrowby=("$dir/marrowby" --registry "$work/mono/registry.reg" --options "$work/options.xml")
"$dir/marrowby" setup-mono --dir "$work/mono" --options "$work/options.xml"
nunit_framework=$(find /usr/lib/cli /usr/lib/mono/gac -name nunit.framework.dll 2>/dev/null | head -n 1)
"${marrowby[@]}" run "$work/hello/hello.mbproj" --var "NUNIT_FRAMEWORK=$nunit_framework" \
  --log "$work/build.log" --junit "$work/report.xml"
echo
echo "Example outputs: $work/hello/bin (Greeter.dll, Greeter.Tests.dll, TestResult.xml, ...)"
echo "Build log: $work/build.log   JUnit report: $work/report.xml"
