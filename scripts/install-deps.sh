#!/usr/bin/env bash
# Installs the Debian 12 packages Tessaly needs to build, test and run.
# Idempotent and quick when everything is present: apt is only touched for missing packages.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qtbase5-dev qtbase5-dev-tools libqt5svg5-dev qttools5-dev qttools5-dev-tools
  libqt5opengl5-dev libqwt-qt5-dev
  libhdf5-dev hdf5-filter-plugin libzstd-dev
  libopencv-dev
  libarmadillo-dev libopenblas-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing missing packages: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
