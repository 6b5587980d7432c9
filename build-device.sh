#!/bin/bash
# Builds Pelnor for the device from Debian's packages, installing what is missing, and packs it for its user:
# build/device/pelnor-arm.exe and build/device/pelnor-arm.zip.
set -euo pipefail
cd "$(dirname "$0")"
. tools/environment.sh

require_packages $device_packages
cmake --preset device
cmake --build --preset device
tools/pack_device build/device/pelnor-arm.exe build/device/pelnor-arm.zip
