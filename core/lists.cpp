#include "core/lists.h"

#include <cstdlib>

void ListInit(ListHeader* list) {
    list->first = reinterpret_cast<ListNode*>(&list->terminator);
    list->terminator = nullptr;
    list->last = reinterpret_cast<ListNode*>(&list->first);
}

ListHeader* ListFindHeader(ListNode* node) {
    while (node->prev != nullptr) node = node->prev;
    return reinterpret_cast<ListHeader*>(node);
}

void ListUnlink(ListNode* node) {
    node->prev->next = node->next;
    node->next->prev = node->prev;
    node->next = nullptr;
    node->prev = nullptr;
}

ListNode* ListRemoveHead(ListHeader* list) {
    if (ListIsEmpty(list)) return nullptr;
    ListNode* node = list->first;
    ListUnlink(node);
    return node;
}

ListNode* ListRemoveTail(ListHeader* list) {
    if (ListIsEmpty(list)) return nullptr;
    ListNode* node = list->last;
    ListUnlink(node);
    return node;
}

void ListInsertAfter(ListNode* predecessor, ListNode* node) {
    node->next = predecessor->next;
    node->prev = predecessor;
    predecessor->next->prev = node;
    predecessor->next = node;
}

void ListAddTail(ListHeader* list, ListNode* node) { ListInsertAfter(list->last, node); }

ListHeader* MakeNewHashTable(int buckets) {
    auto* table = static_cast<ListHeader*>(std::malloc(sizeof(ListHeader) * buckets));
    if (table == nullptr) return nullptr;
    for (int i = 0; i < buckets; ++i) ListInit(&table[i]);
    return table;
}

void FreeHashTable(ListHeader** table) {
    std::free(*table);
    *table = nullptr;
}

uint32_t HashBucket(int32_t key, int buckets) {
    // The magnitude in unsigned arithmetic, so that INT32_MIN has one too.
    uint32_t magnitude = key < 0 ? 0u - static_cast<uint32_t>(key) : static_cast<uint32_t>(key);
    return magnitude % static_cast<uint32_t>(buckets);
}

HashNode* FindHashNode(ListHeader* table, int buckets, int32_t key, ListNode** predecessor) {
    ListHeader* bucket = &table[HashBucket(key, buckets)];
    ListNode* before = ListHeadNode(bucket);
    for (ListNode* node = bucket->first; node->next != nullptr; node = node->next) {
        auto* hashNode = reinterpret_cast<HashNode*>(node);
        if (hashNode->key == key) {
            *predecessor = before;
            return hashNode;
        }
        if (hashNode->key > key) break;
        before = node;
    }
    *predecessor = before;
    return nullptr;
}
