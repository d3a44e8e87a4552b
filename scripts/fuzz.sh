#!/usr/bin/env bash
# Runs each fuzzer of the sanitizer build (build-sanitize, made by scripts/sanitize.sh --build-only) for SECONDS
# (first argument, default 30). Corpora grow in build-sanitize/fuzz/<fuzzer>/corpus; the scene seeds are made
# first with maxhost (tests/fuzz/seeds/make_scene_seeds.ms). A crashing input is saved in
# build-sanitize/fuzz/<fuzzer>/ as crash-*: copy it to tests/fuzz/regressions/<fuzzer>/ once fixed. Exits
# non-zero when any fuzzer found something.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-30}"
bash scripts/sanitize.sh --build-only
source scripts/sanitizer-options.sh
build=build-sanitize
work="$build/fuzz"

# Scene seeds: a set, and shots that reference it with and without edits.
seeds="$work/scene-seeds"
mkdir -p "$seeds"
MAXHOST_TEMP="$PWD/$seeds" "$build/bin/maxhost" --plugins "$build/plugins" --plugins "$build/test-plugins" \
  --ini "$work/seeds.ini" run tests/fuzz/seeds/make_scene_seeds.ms >/dev/null
for f in chunk_reader_fuzz scene_open_fuzz record_load_fuzz maxscript_parse_fuzz; do
  mkdir -p "$work/$f/corpus"
done
cp "$seeds"/*.max "$work/chunk_reader_fuzz/corpus/"
cp "$seeds"/*.max "$work/scene_open_fuzz/corpus/"
VANDRELS_FUZZ_SEEDS="$PWD/$seeds" "$build/bin/record_load_fuzz"
find "$seeds" -type f ! -name '*.max' ! -name '*.ini' -exec cp {} "$work/record_load_fuzz/corpus/" \;
cp tests/scripts/*.ms examples/*.ms "$work/maxscript_parse_fuzz/corpus/"

declare -A max_len=([chunk_reader_fuzz]=8192 [scene_open_fuzz]=65536 [record_load_fuzz]=8192
                    [maxscript_parse_fuzz]=16384)
failed=()
for f in chunk_reader_fuzz scene_open_fuzz record_load_fuzz maxscript_parse_fuzz; do
  echo "== $f: $seconds s"
  if ! "$build/bin/$f" -max_total_time="$seconds" -max_len="${max_len[$f]}" -timeout=25 -rss_limit_mb=4096 \
       -artifact_prefix="$work/$f/" -print_final_stats=1 "$work/$f/corpus" 2>"$work/$f/log.txt"; then
    failed+=("$f")
    tail -60 "$work/$f/log.txt"
  fi
  grep -E "^(stat::number_of_executed_units|stat::peak_rss_mb|#[0-9]+ +DONE)" "$work/$f/log.txt" || true
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzzers that found a failure: ${failed[*]} (inputs in $work/<fuzzer>/)"
  exit 1
fi
