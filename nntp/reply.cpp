#include "nntp/reply.h"

uint32_t ParseNumber(const char*& cursor) {
    uint32_t value = 0;
    for (; *cursor != '\0' && *cursor != ' ' && *cursor != '\r'; ++cursor) {
        if (*cursor < '0' || *cursor > '9') {
            cursor = nullptr;
            return kNotANumber;
        }
        value = value * 10 + static_cast<uint32_t>(*cursor - '0');
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
