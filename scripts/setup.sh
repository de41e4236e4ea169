#!/usr/bin/env bash
# Installs every Debian 12 package that building, running and testing Quelo
# needs. Non-interactive and idempotent; runs as root or through sudo.
set -euo pipefail

packages=(
  # build
  cmake ninja-build g++ pkg-config git clang-format clang-tidy
  # libraries
  libfltk1.3-dev libgl-dev libglu1-mesa-dev libegl-dev libegl-mesa0 libgl1-mesa-dri
  libx11-dev libfreetype-dev libfontconfig-dev fonts-dejavu-core libpng-dev
  nlohmann-json3-dev libcli11-dev
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev xvfb xauth xdotool x11-utils shared-mime-info
  python3-mapbox-earcut
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
  sudo_cmd=(sudo -n)
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
