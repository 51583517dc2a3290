// Iteration over the elements of a non-contiguous internal file (a character array
// section described by an RTD). The descriptor layer provides the walk.
#pragma once

#include <cstdint>

// An iterator over the elements of the array at `base`, or null when it cannot be made.
void* GetNCIterator(const void* descriptor, char* base);
// The next element, or null past the last one.
char* NCNextElement(void* iterator);
// The element length of the array.
int32_t NCElementLength(const void* descriptor);
