# The device with an ARM processor: ARMv4 without floating point. Debian's bare-metal compiler knows no Windows, so the
# Windows headers come from mingw-w64 (see platform/device/compiler.h). What it links becomes the device's executable in
# tools/make_device_exe, whose code the tests run on an emulated core (tests/device/).
set(CMAKE_SYSTEM_PROCESSOR arm)
set(PELNOR_TOOLS arm-none-eabi)
include(${CMAKE_CURRENT_LIST_DIR}/device.cmake)

set(PELNOR_MACHINE -march=armv4 -marm -mfloat-abi=soft)
# The compiler's helpers, made with small enumerations, pass none.
set(PELNOR_LINK -Wl,--fix-v4bx -Wl,--no-enum-size-warning)
set(PELNOR_HELPERS gcc)
