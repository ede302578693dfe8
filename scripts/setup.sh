#!/usr/bin/env bash
# Installs every Debian package the project needs: the tool chain, the libraries and the real .NET
# tools (Mono, xbuild, NUnit) that the end-to-end tests and the example build run, clang with
# its libFuzzer runtime for the fuzz targets, and Node.js with Chromium for the editor's browser tests
# (their npm packages come from scripts/test.sh), and valgrind for the instruction budget.
set -euo pipefail
packages=(
  build-essential cmake ninja-build pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libpugixml-dev liblua5.4-dev libcli11-dev nlohmann-json3-dev libcpp-httplib-dev
  mono-devel mono-xbuild nunit-console
  clang libclang-rt-14-dev
  libxml2-utils valgrind
  zsh
  chromium nodejs
)
# Some Node.js builds bring npm along; Debian's comes as a package of its own.
command -v npm >/dev/null 2>&1 || packages+=(npm)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: all packages present"
  exit 0
fi
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
echo "setup: installing ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
