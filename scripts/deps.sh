#!/usr/bin/env bash
# Installs the Debian packages that the build, the program and the tests need,
# and only those that are missing.
set -euo pipefail

packages=(
    cmake ninja-build g++ make pkg-config python3
    qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite qt6-charts-dev qt6-svg-dev
    qt6-httpserver-dev qt6-websockets-dev libgl-dev libqt6opengl6-dev zlib1g-dev
    libssl-dev openssl libsqlite3-dev sqlite3
    xvfb xauth tinyproxy
    fonts-dejavu-core
    iso-codes famfamfam-flag-png qt6-image-formats-plugins
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
