#!/usr/bin/env bash
# Writes the stored baselines of museum cases (tests/museum/<Case>/baseline.txt) from a run of the current
# build. Use it when a reviewed change of behaviour changes what cases print, or for a new case; read the
# baseline diff (git diff tests/museum) before committing it. Never use it to make a failing case pass.
#
#   scripts/update-museum-baselines.sh [--build DIR] [Case ...]     (all cases when none is named)
#
# A case whose script throws or whose assertions fail writes no baseline: it is reported instead.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="$root/build"
if [ "${1:-}" = "--build" ]; then
  build="$(cd "$2" && pwd)"
  shift 2
fi
if [ ! -f "$build/CTestTestfile.cmake" ]; then
  echo "update-museum-baselines: $build is no configured build tree (cmake -S . -B build first)" >&2
  exit 2
fi
# A new case folder needs the tests to be configured again before CTest knows it.
cmake "$build" > /dev/null
cmake --build "$build" -j2 --target maxhost vandrels script_probe_plugin scene_compare_plugin
pattern='^museum/'
if [ $# -gt 0 ]; then
  names="$(printf '%s|' "$@")"
  pattern="^museum/(${names%|})\$"
fi
MUSEUM_UPDATE=1 ctest --test-dir "$build" -R "$pattern" --no-tests=error --output-on-failure
if git -C "$root" rev-parse --git-dir > /dev/null 2>&1; then
  echo "Baselines that differ from the last commit (review them with git diff -- tests/museum):"
  git -C "$root" status --short -- 'tests/museum/*/baseline.txt'
fi
