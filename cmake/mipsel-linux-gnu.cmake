# The device with a MIPS processor of NEC's VR4100 family: MIPS II without floating point, ll and sc. Debian's compiler
# is one for Linux. So the standard headers are those of the bare-metal ARM compiler; and no helper of the compiler's is
# linked, because its library has a later processor's instructions. All else is as in arm-none-eabi.cmake.
set(CMAKE_SYSTEM_PROCESSOR mips)
set(PELNOR_TOOLS mipsel-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/device.cmake)

set(PELNOR_MACHINE -mips2 -msoft-float -mno-abicalls -fno-pic -nostdinc)
set(PELNOR_LINK -static -Wl,--build-id=none)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
  OUTPUT_VARIABLE own OUTPUT_STRIP_TRAILING_WHITESPACE)
file(GLOB library /usr/include/newlib/c++/*)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${library} ${library}/arm-none-eabi ${own} /usr/include/newlib)
