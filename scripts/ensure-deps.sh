#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the reference host
# need, and nothing when they are all present already.
# Usage: scripts/ensure-deps.sh [fuzz]   (fuzz: also clang and libFuzzer)
set -euo pipefail
packages=(cmake g++ make pkg-config ccache clang-format
          libgtest-dev libgmock-dev libbenchmark-dev libhwy-dev libpng-dev nlohmann-json3-dev
          # The Oxel library over Aravis (real cameras), and arv-tool-0.8 to see what Aravis sees.
          libaravis-dev libusb-1.0-0-dev aravis-tools-cli)
if [ "${1:-}" = fuzz ]; then
  packages+=(clang-14 libclang-rt-14-dev)
fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  SUDO=""
  if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
