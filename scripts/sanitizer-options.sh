# Sourced by scripts/sanitize.sh and scripts/fuzz.sh: every sanitizer finding fails the process, with a stack
# trace; leak reports skip only the third-party noise listed in tests/sanitizers/lsan.supp.
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export ASAN_OPTIONS="detect_leaks=1:check_initialization_order=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export LSAN_OPTIONS="suppressions=$root/tests/sanitizers/lsan.supp:print_suppressions=0"
