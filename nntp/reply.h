// Status lines (RFC 977, section 2.4). Knows no platform.
#pragma once

#include <cstdint>

constexpr uint32_t kReplyLineSize = 1024;  // longest reply line, CR LF included; buffers have one spare byte
constexpr uint32_t kReceiveBufferSize = 4096;

// A buffer for one reply line.
using ReplyLine = char[kReplyLineSize + 1];

// Only the first digit of a status counts: '2' is success, '3' asks for more, anything else refuses.
inline bool IsSuccess(const char* line) {
    return *line == '2';
}
inline bool AsksForMore(const char* line) {
    return *line == '3';
}

constexpr uint32_t kNotANumber = 0xFFFFFFFF;

// Takes the digits at the cursor and the blanks after them. A field ends at a blank, a CR or the end; any
// other byte sets the cursor to null and returns kNotANumber. A field without digits is 0. No check for
// overflow.
uint32_t ParseNumber(const char*& cursor);

// The reply to GROUP: "211 count first last name".
struct GroupReply {
    uint32_t count = 0;
    uint32_t first = 0;
    uint32_t last = 0;
};

// False when one of the four numbers cannot be read.
[[nodiscard]] bool ParseGroupReply(const char* line, GroupReply& reply);

// "211 count first last name", with the name of `group` as it was asked for.
bool NamesGroup(const char* line, const char* group);

// The count says that no number from `first` to `last` is missing.
inline bool HasEveryNumber(const GroupReply& reply) {
    return reply.count != 0 && reply.first <= reply.last && reply.count == reply.last - reply.first + 1;
}
