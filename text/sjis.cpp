#include "text/sjis.h"

std::size_t CopyWholeCharacters(char* field, std::size_t limit, const char* text, std::size_t length) {
    std::size_t copied = 0;
    while (copied < length && !EndsText(text[copied])) {
        const std::size_t size = IsLeadByte(text[copied]) ? 2 : 1;
        if (copied + size > limit || copied + size > length) break;
        if (size == 2 && EndsText(text[copied + 1])) break;
        for (std::size_t i = 0; i < size; ++i)
            field[copied + i] = text[copied + i];
        copied += size;
    }
    return copied;
}
