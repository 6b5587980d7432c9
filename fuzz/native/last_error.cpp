// The last-error value where there is no Windows to keep it.
#include "text/last_error.h"

namespace {

thread_local unsigned lastError = 0;

}  // namespace

void SetError(unsigned error) {
    lastError = error;
}
unsigned GetError() {
    return lastError;
}
