// The last-error value where there is no platform that keeps one.
#include "text/last_error.h"

namespace {

unsigned lastError = 0;

}  // namespace

void SetError(unsigned error) {
    lastError = error;
}
unsigned GetError() {
    return lastError;
}
