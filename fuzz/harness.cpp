#include "fuzz/harness.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

thread_local unsigned lastError = 0;

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

// The last-error value where there is no Windows to keep it.
void SetError(unsigned error) {
    lastError = error;
}
unsigned GetError() {
    return lastError;
}

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
    return ExactBytes(std::string(text.substr(0, text.find('\0'))) + '\0');
}

uint8_t TakeByte(std::string_view& input) {
    if (input.empty()) return 0;
    const auto byte = static_cast<uint8_t>(input.front());
    input.remove_prefix(1);
    return byte;
}

std::string_view TakeUpTo(std::string_view& input, char end) {
    const std::string_view taken = input.substr(0, input.find(end));
    input.remove_prefix(std::min(taken.size() + 1, input.size()));
    return taken;
}

std::string_view WithoutLineEnd(std::string_view line) {
    if (line.empty() || line.back() != '\n') return line;
    line.remove_suffix(1);
    return !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
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

// libFuzzer's own entry name.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    FuzzOne({reinterpret_cast<const char*>(data), size});
    return 0;
}
