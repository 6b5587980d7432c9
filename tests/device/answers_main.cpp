// answers CASES ANSWERS: the desktop's answers to a file of cases, written to another.
#include <cstdio>
#include <memory>
#include <new>

#include "platform/platform.h"
#include "tests/device/answers.h"

namespace {

constexpr uint32_t kMost = 1 << 26;

uint32_t ReadAll(const char* path, char* bytes) {
    std::FILE* file = std::fopen(path, "rb");
    if (!file) return 0;
    const std::size_t size = std::fread(bytes, 1, kMost, file);
    std::fclose(file);
    return static_cast<uint32_t>(size);
}

bool WriteAll(const char* path, const char* bytes, uint32_t size) {
    std::FILE* file = std::fopen(path, "wb");
    if (!file) return false;
    const bool written = std::fwrite(bytes, 1, size, file) == size;
    return std::fclose(file) == 0 && written;
}

}  // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<char[]> cases(new (std::nothrow) char[kMost]);
    const std::unique_ptr<char[]> answers(new (std::nothrow) char[kMost]);
    if (argc != 3 || !cases || !answers) return 2;
    CreateDirectoryW(L"store", nullptr);
    const uint32_t size = AnswerCases(cases.get(), ReadAll(argv[1], cases.get()), answers.get(), kMost);
    return size != 0 && WriteAll(argv[2], answers.get(), size) ? 0 : 1;
}
