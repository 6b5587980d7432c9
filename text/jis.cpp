#include "text/jis.h"

#include <cstring>

#include "text/sjis.h"

namespace {

constexpr char kEscape = 0x1B;

enum class Mode { kSingleByte, kTwoByte, kKatakana };

unsigned ByteAt(const char* text) {
    return static_cast<unsigned char>(*text);
}
bool IsJis(unsigned byte) {
    return byte >= 0x21 && byte <= 0x7E;
}
bool IsEuc(unsigned byte) {
    return byte >= 0xA1 && byte <= 0xFE;
}

void PutJisAsSjis(unsigned j1, unsigned j2, char* destination) {
    if (j1 % 2 != 0) {
        j2 += j2 < 0x60 ? 0x1F : 0x20;
    } else {
        j2 += 0x7E;
    }
    j1 = (j1 + (j1 < 0x5F ? 0xE1 : 0x161)) / 2;
    destination[0] = static_cast<char>(j1);
    destination[1] = static_cast<char>(j2);
}

// The two loops that nearly all text passes through. Whatever else there is stops them: an ESC, the end, odd
// bytes.
void CopySingleBytes(const char*& source, char*& destination) {
    while (ByteAt(source) > kEscape)
        *destination++ = *source++;
}

void ConvertPairs(const char*& source, char*& destination) {
    for (; IsJis(ByteAt(source)) && IsJis(ByteAt(source + 1)); source += 2, destination += 2)
        PutJisAsSjis(ByteAt(source), ByteAt(source + 1), destination);
}

// `source` points just after an ESC. Returns the length of the sequence that it begins, 0 for an unknown one.
unsigned TakeEscape(const char* source, Mode& mode) {
    const char kind = source[0];
    const char set = kind != '\0' ? source[1] : '\0';
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

// Converts one unit of the two-byte mode. Returns the bytes taken, as many as were written: 1 or 2.
unsigned TakeTwoByte(const char* source, char* destination) {
    const unsigned first = ByteAt(source);
    destination[0] = source[0];
    if (!IsJis(first) && !IsEuc(first)) return 1;
    const unsigned second = ByteAt(source + 1);
    if (second == 0) return 1;  // the line ends inside a pair: what is there is kept
    destination[1] = source[1];
    if ((IsJis(first) && IsJis(second)) || (IsEuc(first) && IsEuc(second))) {
        PutJisAsSjis(first & 0x7F, second & 0x7F, destination);
    }
    return 2;
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

void LineFromJis(const char* source, char* destination) {
    Mode mode = Mode::kSingleByte;
    while (*source) {
        const unsigned escape = *source == kEscape ? TakeEscape(source + 1, mode) : 0;
        if (escape != 0) {
            source += 1 + escape;
        } else if (mode == Mode::kTwoByte) {
            const unsigned taken = TakeTwoByte(source, destination);
            source += taken;
            destination += taken;
        } else {
            const unsigned topBit = mode == Mode::kKatakana ? 0x80 : 0;
            *destination++ = static_cast<char>(ByteAt(source++) | topBit);
        }
        if (mode == Mode::kTwoByte) ConvertPairs(source, destination);
        if (mode == Mode::kSingleByte) CopySingleBytes(source, destination);
    }
    *destination = '\0';
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
