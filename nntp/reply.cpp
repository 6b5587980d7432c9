#include "nntp/reply.h"

#include <cstring>

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

namespace {

// Moves `line` to the name.
bool TakeNumbers(const char*& line, uint32_t& status, GroupReply& reply) {
    uint32_t* const fields[] = {&status, &reply.count, &reply.first, &reply.last};
    for (uint32_t* field : fields) {
        *field = ParseNumber(line);
        if (!line) return false;
    }
    return true;
}

}  // namespace

bool ParseGroupReply(const char* line, GroupReply& reply) {
    uint32_t status = 0;
    return TakeNumbers(line, status, reply);
}

bool NamesGroup(const char* line, const char* group) {
    constexpr uint32_t kGroupSelected = 211;
    uint32_t status = 0;
    GroupReply reply;
    if (!TakeNumbers(line, status, reply) || status != kGroupSelected) return false;
    const std::size_t length = std::strlen(group);
    return std::strncmp(line, group, length) == 0 && (line[length] == ' ' || line[length] == '\r');
}
