// The desktop's entry.
#include "platform/platform.h"
#include "shell/application.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int showCommand) {
    return RunPelnor(instance, showCommand);
}
