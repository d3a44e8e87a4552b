#!/usr/bin/env bash
# Builds the chunk-reader fuzz target with clang and runs it briefly (seconds: first argument, default 30).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-30}"
missing=()
for p in clang libclang-rt-14-dev; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz -j2 --target chunk_reader_fuzz
corpus=build-fuzz/fuzz-corpus
mkdir -p "$corpus"
build-fuzz/bin/chunk_reader_fuzz -max_total_time="$seconds" -max_len=4096 "$corpus"
