#!/usr/bin/env bash
# Builds everything and runs every test. Tests that need a window get an Xvfb
# display of their own; headless rendering needs none. Arguments go to ctest.
#
#   scripts/test.sh --clone [ctest args]
# runs the same in a fresh clone of the committed HEAD inside an empty
# temporary folder: the project must build and pass from its own files alone.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"

if [ "${1:-}" = "--clone" ]; then
  shift
  "$root/scripts/setup.sh"
  tmp="$(mktemp -d)"
  trap 'rm -rf "$tmp"' EXIT
  git clone -q "$root" "$tmp/quelo"
  "$tmp/quelo/scripts/test.sh" "$@"
  exit
fi

"$root/scripts/build.sh"
. "$root/scripts/private_xvfb.sh"
cd "$root/build"
# Label "slow" (the largest real-world polygons) runs on demand: ctest -L slow
ctest --output-on-failure -j "$(nproc)" -LE slow "$@"
