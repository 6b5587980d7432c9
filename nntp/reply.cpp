#include "nntp/reply.h"

#include "text/decimal.h"

uint32_t ParseNumber(const char*& cursor) {
    const uint32_t value = TakeDecimal(cursor);
    if (*cursor != '\0' && *cursor != ' ' && *cursor != '\r') {
        cursor = nullptr;
        return kNotANumber;
    }
    while (*cursor == ' ')
        ++cursor;
    return value;
}

bool ParseGroupReply(const char* line, GroupReply& reply) {
    uint32_t status = 0;
    uint32_t* const fields[] = {&status, &reply.count, &reply.first, &reply.last};
    for (uint32_t* field : fields) {
        *field = ParseNumber(line);
        if (!line) return false;
    }
    return true;
}
