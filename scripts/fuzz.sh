#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while on a corpus seeded from the
# test fixtures. Usage: scripts/fuzz.sh [SECONDS-PER-TARGET] [TARGET...]   (default 30 s, all)
# A crash leaves its input in build-fuzz/artifacts/ and makes the script fail.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-30}
shift || true
dir="$root/build-fuzz"
flags=(-DMARROWBY_FUZZ=ON -DMARROWBY_BENCH=OFF -DCMAKE_CXX_COMPILER=clang++)
if command -v ccache >/dev/null; then flags+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
cmake -S "$root" -B "$dir" -G Ninja "${flags[@]}" >/dev/null
ninja -C "$dir" fuzz >&2
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(project_fuzz reg_hive_fuzz command_line_fuzz assemblyinfo_fuzz comref_fuzz)

# Seeds: the fixtures a target's parser reads, with the selector byte some targets put first.
seed() {
  local target=$1 out=$2 i=0 f
  case $target in
    project_fuzz) find "$root/examples" "$root/tests/fixtures" -name '*.mbproj' -exec cp {} "$out" \; ;;
    reg_hive_fuzz) find "$root/tests/fixtures" -name '*.reg' -exec cp {} "$out" \; ;;
    command_line_fuzz) find "$root/tests/fixtures/compilers" -name '*.rsp' -exec cp {} "$out" \; ;;
    assemblyinfo_fuzz)
      # The first byte picks the extension: .pas .dpr .dpk .cs .vb .jsl .cpp .txt
      for f in "$root"/tests/fixtures/assemblyinfo/*/*.in.*; do
        case ${f##*.} in pas) b=0;; dpr) b=1;; dpk) b=2;; cs) b=3;; vb) b=4;; jsl) b=5;; cpp) b=6;; *) b=7;; esac
        { printf "\\x0$b"; cat "$f"; } > "$out/seed$((i++))"
      done ;;
    comref_fuzz)
      for f in "$root"/tests/fixtures/comref/*proj; do
        case ${f##*.} in csproj) b=0;; vbproj) b=1;; *) b=2;; esac
        { printf "\\x0$b"; sed 's/WrenSheet/FuzzSheet/' "$f"; } > "$out/seed$((i++))"
      done ;;
  esac
}

mkdir -p "$dir/artifacts"
# Targets that rewrite files do it in a scratch folder; on tmpfs their flushes cost nothing.
if [ -z "${TMPDIR:-}" ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
work=$(mktemp -d "${TMPDIR:-/tmp}/marrowby-fuzz-corpus-XXXXXX")
trap 'rm -rf "$work"' EXIT
failed=0
for t in "${targets[@]}"; do
  mkdir -p "$work/$t"
  seed "$t" "$work/$t"
  echo "fuzz: $t for ${seconds}s ($(ls "$work/$t" | wc -l) seeds)"
  if ! "$dir/$t" "$work/$t" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
       -artifact_prefix="$dir/artifacts/$t-" -print_final_stats=1 > "$work/$t.log" 2>&1; then
    grep -m1 -A30 -E "^==[0-9]+==ERROR|runtime error|deadly signal|ERROR: libFuzzer" "$work/$t.log" || tail -n 40 "$work/$t.log"
    echo "fuzz: $t FAILED (input saved in $dir/artifacts/)"
    failed=$((failed + 1))
  else
    grep -E 'stat::number_of_executed_units|Done' "$work/$t.log" | tail -n 2 || true
  fi
done
echo "fuzz: $(( ${#targets[@]} - failed )) passed, $failed failed"
[ "$failed" -eq 0 ]
