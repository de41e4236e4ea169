#!/usr/bin/env bash
# Builds with the address and undefined-behaviour sanitizers into build-asan/
# and runs the test suite there. On demand only: slower than scripts/test.sh,
# which it does not replace. Arguments go to ctest (e.g. -R Replay).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build-asan"
"$root/scripts/setup.sh"
cmake -S "$root" -B "$build" -G Ninja -DQUELO_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build "$build" -j "$(nproc)"

# Undefined behaviour fails the test that meets it instead of scrolling past;
# Mesa's own leaks are not ours to fix.
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
export ASAN_OPTIONS="detect_leaks=1:strict_string_checks=1"
export LSAN_OPTIONS="suppressions=$root/scripts/lsan-mesa.supp:print_suppressions=0"

. "$root/scripts/private_xvfb.sh"
cd "$build"
# The sanitizers make every test several times slower: a longer time limit.
ctest --output-on-failure -j "$(nproc)" -LE slow --timeout 1200 "$@"
