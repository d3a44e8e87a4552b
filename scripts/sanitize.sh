#!/usr/bin/env bash
# Builds the sanitizer build (clang; AddressSanitizer with leak detection, UndefinedBehaviorSanitizer, fuzzer
# coverage) in build-sanitize and runs the whole test suite under it. The fuzzers (scripts/fuzz.sh) use the same
# build directory. --build-only stops after the build. Extra arguments go to ctest (e.g. -R pattern).
set -euo pipefail
cd "$(dirname "$0")/.."
build_only=0
if [ "${1:-}" = "--build-only" ]; then
  build_only=1
  shift
fi
missing=()
for p in clang libclang-rt-14-dev llvm; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
CC=clang CXX=clang++ cmake -S . -B build-sanitize -DVANDRELS_SANITIZE=ON >/dev/null
cmake --build build-sanitize -j2
[ "$build_only" -eq 1 ] && exit 0
source scripts/sanitizer-options.sh
# The benchmark-like Qt screenshot tests are left to the normal run (see docs/decisions.md).
ctest --test-dir build-sanitize --output-on-failure -j2 "$@"
