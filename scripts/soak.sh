#!/usr/bin/env bash
# Runs the round-trip tester over N seeds (from FIRST, default 1) in chunks of 100, so that a crash costs one
# chunk only, and prints a summary: seeds run, seeds failed, crashed chunks, the failures by kind. The failures'
# reports go to soak-<first>-<N>.log in the build folder. The shortest failing sequence of a seed is
# found afterwards with `roundtrip --seed S` (the soak skips that search to keep going).
#
#   scripts/soak.sh N [FIRST] [BUILD_DIR]
set -u
count=${1:?usage: scripts/soak.sh N [FIRST] [BUILD_DIR]}
first=${2:-1}
build=${3:-$(dirname "$0")/../build}
tester="$build/bin/roundtrip"
[ -x "$tester" ] || { echo "no $tester: build the roundtrip target first" >&2; exit 2; }
log="$build/soak-$first-$count.log"
: > "$log"
failed=0 crashed=0 seed=$first last=$((first + count))
while [ "$seed" -lt "$last" ]; do
  chunk=$(( last - seed < 100 ? last - seed : 100 ))
  "$tester" --seed "$seed" --count "$chunk" --no-reduce --quiet >> "$log" 2>&1
  status=$?
  if [ "$status" -gt 1 ]; then
    crashed=$((crashed + 1))
    echo "chunk from seed $seed ended with status $status (a crash?)" >> "$log"
  fi
  seed=$((seed + chunk))
done
failed=$(grep -c '^seed [0-9]*: FAILED' "$log")
echo "$count seed(s) from $first: $failed failed, $crashed chunk(s) crashed; reports in $log"
grep '^seed [0-9]*: FAILED' "$log" | sed 's/^seed [0-9]*: FAILED //; s/ (step [0-9]*,/ (/' | sort | uniq -c | sort -rn
[ "$failed" -eq 0 ] && [ "$crashed" -eq 0 ]
