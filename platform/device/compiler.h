// Put before every file of the device build: what mingw-w64's Windows headers need of a compiler that knows
// no Windows. The device has one calling convention, and its exports need no decoration.
#pragma once

#define PELNOR_DEVICE 1  // the home, asked for by platform/ alone

#define _WIN32 1
#define WIN32 1
// On MIPS too, which these headers do not know: the program uses nothing of the processor from them.
#define __arm__ 1
#define _ARM_ 1
#define _M_ARM 1
#define __MINGW32__ 1
#define _WIN32_WINNT 0x0500

#define __declspec(x)
#define __cdecl
#define _cdecl
#define __stdcall
#define __fastcall
