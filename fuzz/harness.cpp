#include "fuzz/harness.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

uint64_t bytesFed = 0;

void ReportBytes() {
    std::fprintf(stderr, "stat::bytes_fed: %" PRIu64 "\n", bytesFed);
}

bool IsTableLead(unsigned char byte) {
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xEF);
}
bool IsTrail(unsigned char byte) {
    return byte >= 0x40 && byte <= 0xFC && byte != 0x7F;
}
bool IsSingle(unsigned char byte) {
    return (byte >= 0x20 && byte <= 0x7E) || (byte >= 0xA1 && byte <= 0xDF);
}

}  // namespace

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

NarrowText ExactBytes(std::string_view text) {
    NarrowText copy = NewArray<char>(text.size());
    if (!text.empty()) std::memcpy(copy.get(), text.data(), text.size());
    return copy;
}

NarrowText ExactText(std::string_view text) {
    const std::string copy(text.substr(0, text.find('\0')));
    return ExactBytes({copy.c_str(), copy.size() + 1});
}

uint8_t TakeByte(std::string_view& input) {
    if (input.empty()) return 0;
    const auto byte = static_cast<uint8_t>(input.front());
    input.remove_prefix(1);
    return byte;
}

uint32_t TakeWord(std::string_view& input) {
    uint32_t word = 0;
    for (unsigned shift = 0; shift < 32; shift += 8)
        word |= static_cast<uint32_t>(TakeByte(input)) << shift;
    return word;
}

std::string_view TakeUpTo(std::string_view& input, char end) {
    const std::size_t length = input.find(end);
    const std::string_view taken = input.substr(0, length);
    input.remove_prefix(length == std::string_view::npos ? input.size() : length + 1);
    return taken;
}

std::string WholeCharacters(std::string_view material) {
    std::string text;
    for (std::size_t i = 0; i < material.size(); ++i) {
        const auto byte = static_cast<unsigned char>(material[i]);
        if (IsSingle(byte)) text += material[i];
        if (!IsTableLead(byte) || i + 1 == material.size()) continue;
        if (IsTrail(static_cast<unsigned char>(material[i + 1]))) text.append(material.substr(i, 2));
        ++i;
    }
    return text;
}

// libFuzzer's own entry names.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::atexit(ReportBytes);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    bytesFed += size;
    FuzzOne({reinterpret_cast<const char*>(data), size});
    return 0;
}
