#!/bin/bash
# Builds Pelnor for the device from Debian's packages, installing what is missing, and packs it for its user:
# pelnor-arm.exe and pelnor-mips.exe in build/device, and a zip of each.
set -euo pipefail
cd "$(dirname "$0")"
. tools/environment.sh

require_packages $device_packages
tools/check_device_api build/device
for processor in arm mips; do
    tools/pack_device build/device/pelnor-$processor.{exe,zip}
done
