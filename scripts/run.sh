#!/usr/bin/env bash
# Builds, then opens the viewer on the demo scene. Where there is no X display
# it says so and draws the scene into a PNG with `qgl render` instead.
# Extra arguments go to the viewer in place of the demo scene.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/build.sh"

scene="$root/examples/demo.qgl"
[ -f "$scene" ] || scene="$root/examples/example.qgl"

if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
  if [ $# -gt 0 ]; then
    exec "$root/build/viewer/quelo" "$@"
  fi
  exec "$root/build/viewer/quelo" "$scene"
fi

if [ -z "${DISPLAY:-}" ]; then
  echo "run.sh: no X display (DISPLAY is not set), so the viewer cannot open a window." >&2
else
  echo "run.sh: the X display $DISPLAY cannot be opened, so the viewer cannot open a window." >&2
fi
picture="$root/build/$(basename "${scene%.qgl}").png"
echo "run.sh: drawing $(basename "$scene") headless instead." >&2
"$root/build/tools/qgl/qgl" render "$scene" -o "$picture"
echo "$picture"
