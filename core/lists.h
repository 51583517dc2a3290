// Doubly linked lists and the hash tables built from them.
//
// A header is three words: first, terminator (always null), last. Seen as a node, the
// header's front end (&first) has prev null and its back end (&terminator) has next null,
// so a walk stops at a node whose next is null and a node can be unlinked without knowing
// which list holds it. The library is built with -fno-strict-aliasing for this overlay.
#pragma once

#include <cstdint>

struct ListNode {
    ListNode* next;
    ListNode* prev;
};

struct ListHeader {
    ListNode* first;
    ListNode* terminator;
    ListNode* last;
};

// A node of a hash table begins with its links and a signed 32-bit key.
struct HashNode {
    ListNode link;
    int32_t key;
};

inline ListNode* ListHeadNode(ListHeader* list) { return reinterpret_cast<ListNode*>(&list->first); }
inline bool ListIsEmpty(const ListHeader* list) { return list->first->next == nullptr; }

void ListInit(ListHeader* list);
ListHeader* ListFindHeader(ListNode* node);
ListNode* ListRemoveHead(ListHeader* list);
ListNode* ListRemoveTail(ListHeader* list);
void ListInsertAfter(ListNode* predecessor, ListNode* node);
void ListAddTail(ListHeader* list, ListNode* node);
void ListUnlink(ListNode* node);

constexpr int kHashBuckets = 127;

ListHeader* MakeNewHashTable(int buckets);
void FreeHashTable(ListHeader** table);
uint32_t HashBucket(int32_t key, int buckets);
// Buckets are kept in ascending key order. predecessor is always where a node with this
// key belongs: behind it.
HashNode* FindHashNode(ListHeader* table, int buckets, int32_t key, ListNode** predecessor);
