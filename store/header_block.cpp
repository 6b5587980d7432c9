#include "store/header_block.h"

#include <cstring>

#include "text/decimal.h"
#include "text/last_error.h"
#include "text/line.h"

namespace {

constexpr uint32_t kGrowth = 2048;
// A server that never ends a head must not take all the memory there is; no honest head comes near.
constexpr std::size_t kLargest = 1 << 18;
constexpr uint32_t kLineEnd = 2;  // CR LF

bool MakeRoom(HeaderBlock& block, std::size_t count) {
    if (block.length + count < block.capacity) return true;
    const std::size_t missing = block.length + count + 1 - block.capacity;
    const std::size_t capacity = block.capacity + (missing + kGrowth - 1) / kGrowth * kGrowth;
    NarrowText larger = capacity <= kLargest ? NewArray<char>(capacity) : nullptr;
    if (!larger) return Fail(kErrorNoMemory);
    std::memcpy(larger.get(), block.buffer.get(), block.length);
    block.buffer = std::move(larger);
    block.capacity = static_cast<uint32_t>(capacity);
    return true;
}

void Write(HeaderBlock& block, std::string_view text) {
    std::memcpy(block.buffer.get() + block.length, text.data(), text.size());
    block.length += static_cast<uint32_t>(text.size());
    block.buffer[block.length] = '\0';
}

// The digits behind the blanks that follow the name, up to a blank, a CR or the end.
uint32_t SequenceOf(std::string_view line) {
    const char* at = line.data() + kSequenceName.size();
    const char* const end = line.data() + line.size();
    while (at < end && *at == ' ')
        ++at;
    const uint32_t value = TakeDecimal(at, end);
    return at == end || *at == ' ' || *at == '\r' || *at == '\0' ? value : kNoNumber;
}

void NoteLine(HeaderBlock& block, std::string_view line) {
    block.inSubject = StartsWith(line, kSubjectName);
    block.inNewsgroup = !block.inSubject && StartsWith(line, kNewsgroupName);
    const auto size = static_cast<uint32_t>(line.size());
    if (block.inSubject) {
        block.subjectLine = block.length;
        block.subjectLength = size;
    } else if (block.inNewsgroup) {
        block.newsgroupLine = block.length;
        block.newsgroupLength = size;
    } else if (StartsWith(line, kSequenceName)) {
        block.sequence = SequenceOf(line);
    } else if (StartsWith(line, kDateName)) {
        block.dateLine = block.length;
    } else if (StartsWith(line, kFromName)) {
        block.fromLine = block.length;
    }
}

bool AddNewLine(HeaderBlock& block, std::string_view line) {
    if (!MakeRoom(block, line.size())) return false;
    NoteLine(block, line);
    Write(block, line);
    return true;
}

// The joined text's own line end stands for the one that it overwrites. Without text there is nothing to
// join: a lone LF is shorter than what it would overwrite, and line after line would eat the block up.
bool JoinContinuation(HeaderBlock& block, std::string_view line) {
    while (IsContinuation(line))
        line.remove_prefix(1);
    const bool joins = block.length > kLineEnd;
    if (joins && LineEndLength(line.data(), line.size()) == line.size()) return true;
    if (!MakeRoom(block, line.size())) return false;
    if (joins) block.length -= kLineEnd;
    Write(block, line);
    const auto added = line.size() > kLineEnd ? static_cast<uint32_t>(line.size()) - kLineEnd : 0;
    if (block.inSubject) {
        block.subjectLength += added;
    } else if (block.inNewsgroup) {
        block.newsgroupLength += added;
    }
    return true;
}

}  // namespace

bool StartHeaderBlock(HeaderBlock& block) {
    NarrowText buffer = block.capacity == kGrowth ? std::move(block.buffer) : NewArray<char>(kGrowth);
    block = HeaderBlock();
    if (!buffer) return false;
    buffer[0] = '\0';
    block.buffer = std::move(buffer);
    block.capacity = kGrowth;
    return true;
}

bool AddHeaderLine(HeaderBlock& block, std::string_view line) {
    return IsContinuation(line) ? JoinContinuation(block, line) : AddNewLine(block, line);
}

std::string_view TextAfterName(const HeaderBlock& block, uint32_t lineOffset) {
    constexpr uint32_t kNameLength = 6;  // the colon and the blank included
    if (lineOffset == kNoLine || block.length - lineOffset < kNameLength) return {};
    const std::string_view line(block.buffer.get() + lineOffset, block.length - lineOffset);
    const bool endsEarly = line[kNameLength - 1] == '\r' || line[kNameLength - 1] == '\n';
    return endsEarly ? std::string_view() : line.substr(kNameLength);
}
