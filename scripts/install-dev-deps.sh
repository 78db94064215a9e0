#!/usr/bin/env bash
# Installs the Debian 12 packages that only the sanitizer and fuzzing builds need (make sanitize,
# make fuzz): clang with its sanitizer and libFuzzer runtimes, and llvm-symbolizer for readable
# reports. make test doesn't need them. Idempotent and quick when everything is present.
set -euo pipefail

packages=(clang libclang-rt-14-dev llvm)

exec bash "$(dirname "$0")/install-missing.sh" "${packages[@]}"
