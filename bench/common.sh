# shellcheck shell=bash
# Shared by the whole-process benchmarks (sourced, not run). Each benchmark times the host and its
# baseline alternately N times and prints one Markdown row: work | host | baseline | ratio | target | met?
# Options every benchmark takes: --build DIR (default: build), --quick (CI-sized inputs), -n N (pairs).
set -euo pipefail

bench_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$bench_dir/.." && pwd)
build="$root/build"
quick=0
pairs=""
while [ $# -gt 0 ]; do
  case "$1" in
    --build) build=$(cd "$2" && pwd); shift 2 ;;
    --quick) quick=1; shift ;;
    -n) pairs=$2; shift 2 ;;
    *) echo "unknown option: $1 (use --build DIR, --quick, -n N)" >&2; exit 2 ;;
  esac
done
marrowby="$build/marrowby"
[ -x "$marrowby" ] || { echo "no $marrowby: build first (ninja -C $build marrowby)" >&2; exit 2; }

# A scratch folder for this benchmark, with its own HOME and XDG folders so that nothing the host
# or a tool writes lands in the user's; removed on exit.
work=$(mktemp -d "${TMPDIR:-/tmp}/marrowby-bench-XXXXXX")
cleanup_dirs=("$work")
trap 'rm -rf "${cleanup_dirs[@]}"' EXIT
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share"
export XDG_STATE_HOME="$work/home/.local/state" XDG_CACHE_HOME="$work/home/.cache"
export MONO_REGISTRY_PATH="$work/home/.mono/registry" NO_COLOR=1 TZ=UTC LC_ALL=C
mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_STATE_HOME" "$XDG_CACHE_HOME"

# The small C programs in bench/tools, built once per build folder (static, so that starting one
# costs as little as possible).
tools="$build/bench-tools"
mkdir -p "$tools"
for src in "$bench_dir"/tools/*.c; do
  bin="$tools/$(basename "$src" .c)"
  if [ ! -x "$bin" ] || [ "$src" -nt "$bin" ]; then
    cc -O2 -Wall -Wextra -static -o "$bin" "$src"
  fi
done

# An empty registry hive and an options file of this scratch folder: the host never looks for Mono.
printf 'Windows Registry Editor Version 5.00\r\n\r\n' >"$work/registry.reg"
mb() { "$marrowby" --registry "$work/registry.reg" --options "$work/options.xml" "$@"; }

# measure [-o FILE] -- COMMAND...: prints "SECONDS MAXRSS_KB"; fails when the command fails.
measure() { "$tools/measure" "$@"; }

# median VALUES...: the middle value (the mean of the two middle ones for an even count).
median() {
  printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END {
    if (NR % 2) print v[(NR + 1) / 2]; else printf "%.6f\n", (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# calc EXPRESSION: floating-point arithmetic.
calc() { awk "BEGIN { printf \"%.6g\", $1 }"; }
# fmt FORMAT EXPRESSION: the result of EXPRESSION printed with a printf format.
fmt() { awk "BEGIN { printf \"$1\", $2 }"; }
# yes_no CONDITION: "yes" when the awk condition holds.
yes_no() { awk "BEGIN { print ($1) ? \"yes\" : \"**no**\" }"; }
# human_kb KB: "12.3 MB" style.
human_kb() { awk -v k="$1" 'BEGIN { if (k >= 1048576) printf "%.2f GB", k / 1048576;
  else if (k >= 1024) printf "%.1f MB", k / 1024; else printf "%d KB", k }'; }

# row WORK HOST BASELINE RATIO TARGET MET (a "|" in a cell is escaped, as Markdown tables need)
row() {
  local cells=()
  for cell in "$@"; do cells+=("${cell//|/\\|}"); done
  printf '| %s | %s | %s | %s | %s | %s |\n' "${cells[@]}"
}

# A project of one folder holding the given steps (XML of <Action> elements on stdin).
# write_project FILE
write_project() {
  {
    printf '<?xml version="1.0" encoding="UTF-8"?>\n<MarrowbyProject version="1">\n  <Actions>\n'
    cat
    printf '  </Actions>\n</MarrowbyProject>\n'
  } >"$1"
}

# The simplest step that runs an arbitrary program: NAnt, whose location is the program.
# use_program_step PROGRAM: points the NAnt option at PROGRAM and makes the build file it names.
use_program_step() {
  mb options set NAnt NAntLocation "$1" >/dev/null
  echo '<project/>' >"$work/default.build"
}
program_step() {
  printf '    <Action class="TNAntAction">\n'
  printf '      <Property name="BuildFile">%s</Property>\n' "$work/default.build"
  printf '    </Action>\n'
}

# The N of pairs: -n, else the benchmark's default.
pairs_or() { echo "${pairs:-$1}"; }

# make_tree DIR COUNT: COUNT AssemblyInfo.cs sources (CRLF, as Visual Studio writes them) in
# DIR/GroupG/ProjectP/Properties/, 100 projects per group.
make_tree() {
  awk -v root="$1" -v count="$2" 'BEGIN {
    for (p = 0; p < count; p++) {
      dir = root "/Group" int(p / 100) "/Project" p "/Properties"
      system("mkdir -p \"" dir "\"")
      f = dir "/AssemblyInfo.cs"
      printf "using System.Reflection;\r\nusing System.Runtime.CompilerServices;\r\n" > f
      printf "using System.Runtime.InteropServices;\r\n\r\n" > f
      printf "// General information about the assembly.\r\n" > f
      printf "[assembly: AssemblyTitle(\"Project%d\")]\r\n", p > f
      printf "[assembly: AssemblyDescription(\"Generated project %d\")]\r\n", p > f
      printf "[assembly: AssemblyConfiguration(\"\")]\r\n[assembly: AssemblyCompany(\"Old Company\")]\r\n" > f
      printf "[assembly: AssemblyProduct(\"Product%d\")]\r\n", p > f
      printf "[assembly: AssemblyCopyright(\"Copyright 2004\")]\r\n[assembly: AssemblyTrademark(\"\")]\r\n" > f
      printf "[assembly: AssemblyCulture(\"\")]\r\n[assembly: ComVisible(false)]\r\n\r\n" > f
      printf "// Version information.\r\n[assembly: AssemblyVersion(\"1.0.*\")]\r\n" > f
      printf "[assembly: AssemblyFileVersion(\"1.0.0.%d\")]\r\n", p > f
      close(f)
    } }'
}

# The three attributes the updater benchmarks set, as the updater, the C floor and sed take them.
stamp_attributes=('AssemblyVersion="2.0.0.1"' 'AssemblyFileVersion="2.0.0.1"' 'AssemblyCompany="Acme Ltd"')
stamp_plain=(AssemblyVersion=2.0.0.1 AssemblyFileVersion=2.0.0.1 'AssemblyCompany=Acme Ltd')
stamp_sed=(
  -e 's/^\[assembly: AssemblyVersion\("[^"]*"\)\]/[assembly: AssemblyVersion("2.0.0.1")]/'
  -e 's/^\[assembly: AssemblyFileVersion\("[^"]*"\)\]/[assembly: AssemblyFileVersion("2.0.0.1")]/'
  -e 's/^\[assembly: AssemblyCompany\("[^"]*"\)\]/[assembly: AssemblyCompany("Acme Ltd")]/')

# updater_project FILE ROOT BACKUPS: one updater step over ROOT's *.cs files.
updater_project() {
  {
    printf '    <Action class="TWrenAssemblyInfoUpdaterAction">\n'
    printf '      <Property name="Selection">\n        <Item>%s/*.cs</Item>\n      </Property>\n' "$2"
    printf '      <Property name="BackupFiles">%s</Property>\n' "$3"
    printf '      <Property name="Recurse">true</Property>\n'
    printf '      <Property name="Attributes">\n'
    printf '        <Item>%s</Item>\n' "${stamp_attributes[@]}"
    printf '      </Property>\n    </Action>\n'
  } | write_project "$1"
}

# fs_type DIR: the file system DIR lives on (ext4, tmpfs, ...).
fs_type() { df --output=fstype "$1" | tail -n 1 | tr -d ' '; }

# validate_steps COUNT: COUNT program steps, each with a description and a few properties.
validate_steps() {
  awk -v count="$1" -v build="$work/default.build" 'BEGIN {
    for (i = 1; i <= count; i++) {
      printf "    <Action class=\"TNAntAction\" description=\"Build part %d of the product\">\n", i
      printf "      <Property name=\"BuildFile\">%s</Property>\n", build
      printf "      <Property name=\"Targets\">clean build test-%d</Property>\n", i
      printf "      <Property name=\"LogLevel\">llVerbose</Property>\n"
      printf "      <Property name=\"NoLogo\">true</Property>\n"
      printf "    </Action>\n"
    } }'
}
