// A hashed set of 8-bit strings whose nodes and texts live on one private heap: releasing it is one call. The
// order of iteration decides the order of group.dat, so the hash is part of the file format.
#pragma once

#include <array>
#include <cstdint>

#include "platform/owners.h"

constexpr uint32_t kBucketCount = 91;

struct StringNode {
    StringNode* next = nullptr;  // in the chain; on the set's heap
    const char* text = nullptr;  // NUL-terminated, on the set's heap
    void* spare = nullptr;
};

struct StringSet {
    HeapOwner heap;
    std::array<StringNode*, kBucketCount> buckets = {};  // chains, newest first
};

// Makes an empty set; what it held before is gone. False when the heap cannot be made.
[[nodiscard]] bool CreateStringSet(StringSet& set);
void DestroyStringSet(StringSet& set);

// Adds a copy without looking for duplicates. Null, with error 8, when the heap (1,024,000 bytes) is
// exhausted.
StringNode* AddString(StringSet& set, const char* text);

// The newest node with exactly this text, or null.
StringNode* FindString(const StringSet& set, const char* text);

// Takes the newest node with this text out; false when there is none.
bool RemoveString(StringSet& set, const char* text);

// Bucket of a text: the exclusive-or of its bytes, each widened with its sign, modulo 91.
uint32_t BucketOf(const char* text);

// Walks bucket 0 to 90, each chain from its head. The set must not change meanwhile.
struct StringSetIterator {
    const StringSet* set = nullptr;
    uint32_t nextBucket = 0;
    StringNode* current = nullptr;
};

StringSetIterator IterateStrings(const StringSet& set);
StringNode* NextString(StringSetIterator& iterator);  // null at the end
