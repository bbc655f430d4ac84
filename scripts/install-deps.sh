#!/usr/bin/env bash
# Installs what building and testing need, from Debian 12 packages. Safe to run again.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-svg-dev libqcustomplot-dev libliquid-dev libfftw3-dev
  libcli11-dev libgtest-dev libgmock-dev libbenchmark-dev libboost-math-dev
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all packages present"
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
# A fresh machine has no package lists yet.
if ! ls /var/lib/apt/lists/*_Packages >/dev/null 2>&1; then $sudo apt-get update; fi
if ! $sudo apt-get install -y --no-install-recommends "${missing[@]}"; then
  $sudo apt-get update
  $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi
