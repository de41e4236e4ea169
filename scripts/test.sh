#!/usr/bin/env bash
# Builds everything and runs every test. Tests that need a window get an Xvfb
# display of their own; headless rendering needs none.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/build.sh"
export LP_NUM_THREADS=0 LP_NATIVE_VECTOR_WIDTH=128
export MESA_SHADER_CACHE_DIR="$root/build/mesa-cache"

. "$root/scripts/private_xvfb.sh"
cd "$root/build"
# Label "slow" (the largest real-world polygons) runs on demand: ctest -L slow
ctest --output-on-failure -j "$(nproc)" -LE slow "$@"
