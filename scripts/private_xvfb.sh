# Sourced by the test scripts: starts a private Xvfb display for the window
# tests, exports DISPLAY and stops the server when the script exits. Headless
# rendering (EGL) needs none of this.
xvfb_pid=""
dpyfile="$(mktemp)"
cleanup_xvfb() {
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null || true
  rm -f "$dpyfile"
}
trap cleanup_xvfb EXIT
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
  echo "$(basename "$0"): Xvfb did not start; window tests will fail" >&2
fi
