#include "text/jis.h"

#include <cstring>

#include "text/sjis.h"

namespace {

constexpr char kEscape = 0x1B;

using Byte = unsigned char;

enum class Mode { kSingleByte, kTwoByte, kKatakana };

unsigned ByteAt(const char* text) {
    return static_cast<unsigned char>(*text);
}

// A row or a cell of JIS X 0208, counted from 0; in EUC the top bit is set.
constexpr unsigned kCells = 94;
constexpr unsigned kFirstJis = 0x21;
constexpr unsigned kFirstEuc = 0xA1;

// Two rows share a lead byte. Lead bytes leave out 0xA0 to 0xDF, trail bytes 0x7F.
void PutAsSjis(unsigned row, unsigned cell, Byte* destination) {
    const unsigned firstTrail = row % 2 != 0 ? 0x9F : cell < 0x7F - 0x40 ? 0x40 : 0x41;
    destination[0] = static_cast<Byte>((row / 2 + 0xA1) ^ 0x20);
    destination[1] = static_cast<Byte>(firstTrail + cell);
}

// `source` points just after an ESC. Returns the length of the sequence that it begins, 0 for an unknown one.
unsigned TakeEscape(const Byte* source, Mode& mode) {
    const Byte kind = source[0];
    const Byte set = kind != '\0' ? source[1] : '\0';
    if (kind == 'K' || (kind == '$' && (set == 'B' || set == '@'))) {
        mode = Mode::kTwoByte;
    } else if (kind == 'H' || (kind == '(' && (set == 'B' || set == 'J' || set == 'H'))) {
        mode = Mode::kSingleByte;
    } else if (kind == '(' && set == 'I') {
        mode = Mode::kKatakana;
    } else {
        return 0;
    }
    return kind == 'K' || kind == 'H' ? 1 : 2;
}

// Copies one byte and all that follow but control bytes.
void TakeSingleBytes(const Byte*& source, Byte*& destination) {
    do {
        *destination++ = *source++;
    } while (*source > kEscape);
}

// Converts the pairs that there are; else copies one unit, which is 1 or 2 bytes.
void TakeTwoBytes(const Byte*& source, Byte*& destination, Byte end) {
    const Byte* const start = source;
    const unsigned first = *source < kFirstEuc ? kFirstJis : kFirstEuc;
    for (; *source - first < kCells; source += 2, destination += 2) {
        const unsigned cell = source[1] - first;
        if (cell >= kCells) break;
        PutAsSjis(*source - first, cell, destination);
    }
    if (source != start) return;
    const bool two = *source - first < kCells && source[1] != '\0' && source[1] != end;
    *destination++ = *source++;
    if (two) *destination++ = *source++;
}

// Text that grows as it is written; `failed` is set once memory runs out.
struct GrowingText {
    NarrowText buffer;
    std::size_t length = 0;
    std::size_t capacity = 0;
    bool failed = false;
};

constexpr std::size_t kFirstCapacity = 256;
constexpr std::size_t kGrowth = 64;

void Put(GrowingText& text, char byte) {
    if (text.length == text.capacity && !text.failed) {
        const std::size_t capacity = text.capacity ? text.capacity + kGrowth : kFirstCapacity;
        NarrowText larger = NewArray<char>(capacity);
        text.failed = !larger;
        if (larger && text.length != 0) std::memcpy(larger.get(), text.buffer.get(), text.length);
        if (larger) {
            text.buffer = std::move(larger);
            text.capacity = capacity;
        }
    }
    if (!text.failed) text.buffer[text.length++] = byte;
}

void PutEscape(GrowingText& text, char second, char third) {
    Put(text, kEscape);
    Put(text, second);
    Put(text, third);
}

bool IsTrailByte(unsigned byte) {
    return byte >= 0x40 && byte <= 0xFC && byte != 0x7F;
}

void PutSjisAsJis(GrowingText& text, unsigned s1, unsigned s2) {
    unsigned j1 = 2 * (s1 - (s1 <= 0x9F ? 0x70 : 0xB0));
    if (s2 < 0x9F) j1 -= 1;
    const unsigned j2 = s2 - (s2 < 0x7F ? 0x1F : s2 < 0x9F ? 0x20 : 0x7E);
    Put(text, static_cast<char>(j1 & 0xFF));
    Put(text, static_cast<char>(j2 & 0xFF));
}

// Writes the two-byte character at `text`; returns the bytes taken.
unsigned PutCharacter(GrowingText& out, const char* text) {
    const unsigned trail = ByteAt(text + 1);
    if (IsTrailByte(trail)) {
        PutSjisAsJis(out, ByteAt(text), trail);
        return 2;
    }
    Put(out, text[0]);
    if (trail == 0) return 1;
    Put(out, text[1]);
    return 2;
}

}  // namespace

char* TextFromJis(const char*& text, char* converted, char end) {
    auto source = reinterpret_cast<const Byte*>(text);
    auto destination = reinterpret_cast<Byte*>(converted);
    Mode mode = Mode::kSingleByte;
    while (*source && *source != end) {
        const unsigned escape = *source == kEscape ? TakeEscape(source + 1, mode) : 0;
        if (escape != 0) {
            source += 1 + escape;
        } else if (mode == Mode::kTwoByte) {
            TakeTwoBytes(source, destination, end);
        } else if (mode == Mode::kSingleByte) {
            TakeSingleBytes(source, destination);
        } else {
            *destination++ = *source++ | 0x80;
        }
    }
    text = reinterpret_cast<const char*>(source);
    return reinterpret_cast<char*>(destination);
}

void LineFromJis(const char* source, char* destination) {
    *TextFromJis(source, destination, '\0') = '\0';
}

NarrowText TextToJis(const char* text) {
    GrowingText out;
    bool twoByte = false;
    while (*text) {
        const bool lead = IsLeadByte(*text);
        if (lead && !twoByte) PutEscape(out, '$', 'B');
        if (!lead && twoByte) PutEscape(out, '(', 'B');
        twoByte = lead;
        if (lead) {
            text += PutCharacter(out, text);
        } else {
            Put(out, *text++);
        }
    }
    PutEscape(out, '(', 'B');
    Put(out, '\0');
    return out.failed ? nullptr : std::move(out.buffer);
}
