#!/usr/bin/env bash
# Installs the Debian packages a target needs, and only those that are missing.
# Usage: scripts/install-deps.sh test|bench|fuzz
set -euo pipefail

core=(g++ make cmake ninja-build pkg-config ccache
      libpixman-1-dev libcairo2-dev libfreetype-dev libharfbuzz-dev libfontconfig-dev
      libpng-dev libjpeg62-turbo-dev libsdl2-dev libx11-dev nlohmann-json3-dev
      libgtest-dev libgmock-dev fonts-dejavu-core xvfb xauth)
bench=(libbenchmark-dev qtbase5-dev libpango1.0-dev)
# clang and its libFuzzer runtime (libclang_rt.fuzzer), for `make fuzz` only.
fuzz=(clang libclang-rt-14-dev)

case "${1:-test}" in
  test)  wanted=("${core[@]}") ;;
  bench) wanted=("${core[@]}" "${bench[@]}") ;;
  fuzz)  wanted=("${core[@]}" "${fuzz[@]}") ;;
  *) echo "usage: $0 test|bench|fuzz" >&2; exit 2 ;;
esac

missing=()
for package in "${wanted[@]}"; do
  dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
