#include "text/mime.h"

#include <cstring>

#include "text/last_error.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kLowerOpening[] = "iso-2022-jp?B?";
constexpr char kUpperOpening[] = "ISO-2022-JP?B?";
constexpr std::size_t kOpeningLength = sizeof(kLowerOpening) - 1;
constexpr unsigned kNoValue = 64;

unsigned Base64Value(char c) {
    if (c >= 'A' && c <= 'Z') return static_cast<unsigned>(c - 'A');
    if (c >= 'a' && c <= 'z') return static_cast<unsigned>(c - 'a') + 26;
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0') + 52;
    if (c == '+') return 62;
    return c == '/' ? 63 : kNoValue;
}

bool EndsEncodedText(char c) {
    return c == '?' || c == '\0';
}

// A group of up to four characters: fewer when the text ends inside it. `values` beyond `count` are kNoValue.
struct Group {
    unsigned values[4] = {kNoValue, kNoValue, kNoValue, kNoValue};
    unsigned count = 0;
};

Group TakeGroup(const char*& source) {
    Group group;
    while (group.count < 4 && !EndsEncodedText(*source))
        group.values[group.count++] = Base64Value(*source++);
    return group;
}

void PutGroup(const Group& group, char*& destination) {
    const auto& [a, b, c, d] = group.values;
    if (group.count < 2) return;  // six bits are no byte
    *destination++ = static_cast<char>((a * 4 + b / 16) & 0xFF);
    if (c == kNoValue) return;
    *destination++ = static_cast<char>((b % 16 * 16 + c / 4) & 0xFF);
    if (d == kNoValue) return;
    *destination++ = static_cast<char>((c % 4 * 64 + d) & 0xFF);
}

void DecodeBase64Run(const char*& source, char*& destination) {
    while (!EndsEncodedText(*source))
        PutGroup(TakeGroup(source), destination);
}

bool StartsWithOpening(const char* source) {
    return std::strncmp(source, kLowerOpening, kOpeningLength) == 0 ||
           std::strncmp(source, kUpperOpening, kOpeningLength) == 0;
}

// The encoder's place in the text; the mode carries over from one word to the next.
struct JisCursor {
    const char* text;
    bool twoByte = false;
};

enum class TokenKind { kEscape, kPair, kByte };

struct Token {
    TokenKind kind;
    std::size_t length;
};

constexpr char kEscape = 0x1B;
constexpr std::size_t kPieceLimit = 26;
constexpr std::size_t kEscapeLength = 3;
constexpr char kToTwoByte[] = "\x1B$B";
constexpr char kToSingleByte[] = "\x1B(B";

Token PeekToken(const JisCursor& cursor) {
    const char* text = cursor.text;
    if (text[0] == kEscape && text[1] != '\0' && text[2] == 'B') return {TokenKind::kEscape, kEscapeLength};
    if (cursor.twoByte && text[1] != '\0') return {TokenKind::kPair, 2};
    return {TokenKind::kByte, 1};
}

void TakeToken(JisCursor& cursor, const Token& token) {
    if (token.kind == TokenKind::kEscape && cursor.text[1] == '$') cursor.twoByte = true;
    if (token.kind == TokenKind::kEscape && cursor.text[1] == '(') cursor.twoByte = false;
    cursor.text += token.length;
}

// One word's raw bytes, NUL-terminated once they are complete.
struct Piece {
    char bytes[kPieceLimit + kEscapeLength + 1] = {};
    std::size_t length = 0;
};

void AddToPiece(Piece& piece, const char* bytes, std::size_t count) {
    std::memcpy(piece.bytes + piece.length, bytes, count);
    piece.length += count;
}

// Each word is complete in itself: one that goes on in two-byte mode enters it again.
void OpenPiece(Piece& piece, JisCursor& cursor) {
    if (!cursor.twoByte || *cursor.text == '\0') return;
    const Token first = PeekToken(cursor);
    if (first.kind == TokenKind::kPair) AddToPiece(piece, kToTwoByte, kEscapeLength);
    if (first.kind != TokenKind::kEscape) return;
    TakeToken(cursor, first);
    cursor.twoByte = false;
}

void FillPiece(Piece& piece, JisCursor& cursor) {
    OpenPiece(piece, cursor);
    bool endsInPair = false;
    bool endsInOpening = false;
    while (*cursor.text != '\0') {
        const Token token = PeekToken(cursor);
        if (piece.length + token.length + kEscapeLength >= kPieceLimit) break;
        endsInPair = token.kind == TokenKind::kPair;
        endsInOpening = token.kind == TokenKind::kEscape && cursor.text[1] == '$';
        AddToPiece(piece, cursor.text, token.length);
        TakeToken(cursor, token);
    }
    if (endsInPair) AddToPiece(piece, kToSingleByte, kEscapeLength);
    if (endsInOpening) piece.length -= kEscapeLength;
    piece.bytes[piece.length] = '\0';
}

void WriteWord(const Piece& piece, char* word) {
    word[0] = '\0';
    if (piece.length == 0) return;
    std::strcpy(word, "=?");
    std::strcat(word, kLowerOpening);
    Base64Encode(piece.bytes, word + std::strlen(word));
    std::strcat(word, "?=");
}

EncodedWord* AppendWord(EncodedWordList& list) {
    std::unique_ptr<EncodedWord> word(new (std::nothrow) EncodedWord);
    if (word) word->text = NewArray<char>(kEncodedWordSize);
    if (!word || !word->text) return nullptr;
    (list.last ? list.last->next : list.first) = word.get();
    list.last = word.release();
    return list.last;
}

}  // namespace

void DecodeEncodedWords(char* destination, const char* source) {
    while (*source) {
        if (source[0] != '=' || source[1] != '?') {
            *destination++ = *source++;
        } else if (!StartsWithOpening(source + 2)) {
            *destination++ = *source++;
            *destination++ = *source++;
        } else {
            source += 2 + kOpeningLength;
            DecodeBase64Run(source, destination);
            if (source[0] != '?' || source[1] != '=') break;
            source += 2;
        }
    }
    *destination = '\0';
}

bool EncodeAsWords(EncodedWordList& list, const char* jisText) {
    JisCursor cursor{jisText};
    while (*cursor.text != '\0') {
        EncodedWord* word = AppendWord(list);
        if (!word) return Fail(kErrorNoMemory);
        Piece piece;
        FillPiece(piece, cursor);
        WriteWord(piece, word->text.get());
    }
    return true;
}

void ReleaseEncodedWords(EncodedWordList& list) {
    for (EncodedWord* word = list.first; word;) {
        EncodedWord* next = word->next;
        delete word;
        word = next;
    }
    list = EncodedWordList();
}

void Base64Encode(const char* source, char* destination) {
    std::size_t left = std::strlen(source);
    while (left > 0) {
        const unsigned a = static_cast<unsigned char>(source[0]);
        const unsigned b = left > 1 ? static_cast<unsigned char>(source[1]) : 0;
        const unsigned c = left > 2 ? static_cast<unsigned char>(source[2]) : 0;
        destination[0] = kAlphabet[a / 4];
        destination[1] = kAlphabet[a % 4 * 16 + b / 16];
        destination[2] = left > 1 ? kAlphabet[b % 16 * 4 + c / 64] : '=';
        destination[3] = left > 2 ? kAlphabet[c % 64] : '=';
        const std::size_t taken = left < 3 ? left : 3;
        source += taken;
        left -= taken;
        destination += 4;
    }
    *destination = '\0';
}
