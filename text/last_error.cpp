#include "text/last_error.h"

#include "platform/platform.h"

void SetError(unsigned error) {
    SetLastError(error);
}
unsigned GetError() {
    return GetLastError();
}
