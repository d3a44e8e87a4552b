#!/usr/bin/env bash
# Installs the Debian packages this project builds and tests with, when they are missing.
set -euo pipefail
# Qt 6 Widgets and Qt Test for the windows (tests run them on the offscreen platform); xvfb only for
# scripts/screenshots.sh.
packages=(cmake g++ make libgtest-dev libgmock-dev pkg-config ccache qt6-base-dev qt6-base-dev-tools libqt6test6 fonts-dejavu-core xvfb)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
