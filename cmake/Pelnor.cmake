# What every target of the desktop build shares.
set(PELNOR_WARNINGS -Wall -Wextra -Wshadow -Wconversion -Werror)
set(PELNOR_DEFINITIONS UNICODE _UNICODE WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0501)
set(CMAKE_RC_FLAGS "-c 65001 -I \"${CMAKE_SOURCE_DIR}\"")
