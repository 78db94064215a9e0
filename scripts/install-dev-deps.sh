#!/usr/bin/env bash
# Installs the Debian 12 packages that only the sanitizer and fuzzing builds need (make sanitize,
# make fuzz): clang with its sanitizer and libFuzzer runtimes, and llvm-symbolizer for readable
# reports. make test doesn't need them. Idempotent and quick when everything is present.
set -euo pipefail

packages=(clang libclang-rt-14-dev llvm)

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
