// Where the system starts the program.
#include "platform/platform.h"

using Constructor = void (*)();

// The constructors of objects with static lifetime: an array that the linker gathers (layout.ld).
extern const Constructor constructorsBegin[];
extern const Constructor constructorsEnd[];

// Called by the system with the program's instance, null, the command line and the show command.
extern "C" void DeviceEntry(HINSTANCE instance, HINSTANCE previous, LPWSTR commandLine, int showCommand);

void DeviceEntry(HINSTANCE instance, HINSTANCE previous, LPWSTR commandLine, int showCommand) {
    for (const Constructor* constructor = constructorsBegin; constructor != constructorsEnd; ++constructor)
        (*constructor)();
    const int result = wWinMain(instance, previous, commandLine, showCommand);
    ExitThread(static_cast<DWORD>(result));  // the first thread takes the process with it
}
