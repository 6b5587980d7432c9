# What the device's toolchains share; PELNOR_TOOLS is what their programs' names begin with.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_C_COMPILER ${PELNOR_TOOLS}-gcc)
set(CMAKE_CXX_COMPILER ${PELNOR_TOOLS}-g++)
set(CMAKE_ASM_COMPILER ${PELNOR_TOOLS}-gcc)
