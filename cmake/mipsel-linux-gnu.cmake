# The device with a MIPS processor of NEC's VR4100 family: MIPS II without floating point, ll and sc. Debian's compiler
# is one for Linux; what makes it bare-metal stands below. The standard headers are those of the bare-metal ARM compiler,
# all else is as in arm-none-eabi.cmake.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR mips)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_C_COMPILER mipsel-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER mipsel-linux-gnu-g++)
set(CMAKE_ASM_COMPILER mipsel-linux-gnu-gcc)

# The two mends keep from a division or a product what some of that family get wrong.
set(PELNOR_MACHINE -EL -mips2 -mfp32 -msoft-float
  -G0 -mno-abicalls -mno-shared -fno-pic -fno-stack-protector
  -nostdinc -nostdinc++ -Ulinux -U__linux -U__linux__ -U__gnu_linux__ -Uunix -U__unix -U__unix__
  -D__arm__) # what the Windows headers ask for, which know no MIPS; nothing of the processor is used from them
set(PELNOR_LINK -static -Wl,--build-id=none)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
  OUTPUT_VARIABLE own OUTPUT_STRIP_TRAILING_WHITESPACE)
file(GLOB library /usr/include/newlib/c++/*)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${library} ${library}/arm-none-eabi ${own} /usr/include/newlib)
