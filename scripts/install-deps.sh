#!/usr/bin/env bash
# Installs the Debian 12 packages the build and the tests need.
# Does nothing when they are all present, so every make target can call it.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang clang-format libclang-rt-14-dev pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-tools-dev qt6-tools-dev-tools
  qt6-connectivity-dev libqt6svg6 libqt6opengl6-dev libxkbcommon-dev
  libboost-dev libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth xdotool python3 fonts-dejavu-core
  dbus-daemon python3-dbusmock  # a private bus and a mock BlueZ for the discovery tests
  openobex-apps  # obex_test, the OBEX server the transfer test pushes to
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}"
sudo_cmd=()
[[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
