#include "store/string_set.h"

#include <cstring>
#include <new>

#include "platform/heap.h"
#include "text/last_error.h"

namespace {

constexpr SIZE_T kInitialSize = 102400;
constexpr SIZE_T kMaximumSize = 1024000;

StringNode** FindLink(StringSet& set, const char* text) {
    StringNode** link = &set.buckets[BucketOf(text)];
    while (*link && std::strcmp((*link)->text, text) != 0)
        link = &(*link)->next;
    return link;
}

char* CopyToHeap(const HeapOwner& heap, const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    auto copy = static_cast<char*>(TakeFrom(heap, size));
    if (copy) std::memcpy(copy, text, size);
    return copy;
}

}  // namespace

bool CreateStringSet(StringSet& set) {
    DestroyStringSet(set);
    set.heap = MakeHeap(kInitialSize, kMaximumSize);
    return static_cast<bool>(set.heap);
}

void DestroyStringSet(StringSet& set) {
    set.heap.Reset();
    set.buckets.fill(nullptr);
}

StringNode* AddString(StringSet& set, const char* text) {
    void* memory = TakeFrom(set.heap, sizeof(StringNode));
    const char* copy = memory ? CopyToHeap(set.heap, text) : nullptr;
    if (!copy) {
        if (memory) HeapFree(set.heap.Get(), 0, memory);
        SetError(kErrorNoMemory);
        return nullptr;
    }
    StringNode*& head = set.buckets[BucketOf(text)];
    head = new (memory) StringNode{head, copy, nullptr};
    return head;
}

StringNode* FindString(const StringSet& set, const char* text) {
    StringNode* node = set.buckets[BucketOf(text)];
    while (node && std::strcmp(node->text, text) != 0)
        node = node->next;
    return node;
}

bool RemoveString(StringSet& set, const char* text) {
    StringNode** link = FindLink(set, text);
    StringNode* node = *link;
    if (!node) return false;
    *link = node->next;
    HeapFree(set.heap.Get(), 0, const_cast<char*>(node->text));
    HeapFree(set.heap.Get(), 0, node);
    return true;
}

uint32_t BucketOf(const char* text) {
    uint32_t hash = 0;
    for (; *text; ++text)
        hash ^= static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(*text)));
    return hash % kBucketCount;
}

StringSetIterator IterateStrings(const StringSet& set) {
    return {&set, 0, nullptr};
}

StringNode* NextString(StringSetIterator& iterator) {
    if (iterator.current) iterator.current = iterator.current->next;
    while (!iterator.current && iterator.nextBucket < kBucketCount) {
        iterator.current = iterator.set->buckets[iterator.nextBucket++];
    }
    return iterator.current;
}
