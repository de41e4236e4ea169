#!/bin/bash
# Checks the naming rule (.clang-tidy, docs/naming.md) over the project's own
# sources; exits non-zero on any finding. Uses the compile commands of
# $QUELO_BUILD_DIR (default build/), configuring build/ first when it has none.
#   scripts/tidy.sh [files...]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${QUELO_BUILD_DIR:-build}
if [ ! -f "$build/compile_commands.json" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
fi
if [ $# -gt 0 ]; then
  files=("$@")
else
  mapfile -t files < <(git ls-files 'common/*.cpp' 'facet/*.cpp' 'scenefile/*.cpp' 'glctrl/*.cpp' \
    'sceneload/*.cpp' 'image/*.cpp' 'view/*.cpp' 'form/*.cpp' 'viewer/*.cpp' 'tools/*.cpp')
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy -p "$build" --quiet >"$log" 2>/dev/null || true
findings=$(grep -cE '(warning|error):' "$log" || true)
if [ "$findings" -ne 0 ]; then
  grep -A3 -E '(warning|error):' "$log"
  echo "tidy: $findings naming findings" >&2
  exit 1
fi
echo "tidy: ${#files[@]} files, no findings"
