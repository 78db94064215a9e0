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

exec bash "$(dirname "$0")/install-missing.sh" "${packages[@]}"
