// The entry: where the desktop's system starts the program, and what the device's DeviceEntry calls.
#include "platform/platform.h"
#include "shell/app_frame.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int showCommand) {
    return RunPelnor(instance, showCommand);
}
