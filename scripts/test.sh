#!/usr/bin/env bash
# Builds everything and runs every test. Tests that need a window get an Xvfb
# display of their own; headless rendering needs none.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/build.sh"
export LP_NUM_THREADS=0 LP_NATIVE_VECTOR_WIDTH=128
export MESA_SHADER_CACHE_DIR="$root/build/mesa-cache"

xvfb_pid=""
dpyfile="$(mktemp)"
cleanup() {
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null || true
  rm -f "$dpyfile"
}
trap cleanup EXIT
# Window tests get a private display; headless rendering (EGL) needs none.
# -noreset: otherwise the server resets whenever its last client leaves, and a
# window test that connects at that moment is refused.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$dpyfile" 2>/dev/null &
xvfb_pid=$!
for _ in $(seq 100); do
  [ -s "$dpyfile" ] && break
  sleep 0.1
done
if [ -s "$dpyfile" ]; then
  export DISPLAY=":$(head -n1 "$dpyfile")"
else
  echo "test.sh: Xvfb did not start; window tests will fail" >&2
fi
cd "$root/build"
# Label "slow" (the largest real-world polygons) runs on demand: ctest -L slow
ctest --output-on-failure -j "$(nproc)" -LE slow "$@"
