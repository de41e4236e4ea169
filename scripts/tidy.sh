#!/bin/bash
# Checks the naming rule (.clang-tidy, docs/naming.md) over the project's own
# sources (not tests/, bench/, fuzz/ or generated code); exits non-zero on any
# finding and when clang-tidy cannot check a file. Uses the compile commands of
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
    'sceneload/*.cpp' 'image/*.cpp' 'view/*.cpp' 'form/*.cpp' 'viewer/*.cpp' 'tools/*.cpp' \
    | grep -v '/generated/')
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# Two jobs: the machine is shared with builds. clang-tidy exits non-zero only
# when a file cannot be checked; naming findings are counted from its output.
status=0
printf '%s\n' "${files[@]}" | xargs -P 2 -n 4 clang-tidy -p "$build" --quiet >"$log" 2>&1 || status=$?
findings=$(grep -cE '(warning|error):' "$log" || true)
if [ "$findings" -ne 0 ] || [ "$status" -ne 0 ]; then
  grep -A3 -E '(warning|error):' "$log" || cat "$log"
  echo "tidy: $findings findings (clang-tidy status $status)" >&2
  exit 1
fi
echo "tidy: ${#files[@]} files, no findings"
