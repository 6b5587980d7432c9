# The device's machine: ARMv4 without floating point. Debian's bare-metal compiler knows no Windows, so the Windows
# headers come from mingw-w64 (see platform/device/compiler.h). What it links becomes the device's
# executable in tools/make_device_exe, whose code the tests run on an emulated core (tests/device/).
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR armv4)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_C_COMPILER arm-none-eabi-gcc)
set(CMAKE_CXX_COMPILER arm-none-eabi-g++)
set(CMAKE_ASM_COMPILER arm-none-eabi-gcc)

set(PELNOR_WINDOWS_HEADERS /usr/share/mingw-w64/include)
