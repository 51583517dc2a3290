// Reading run-time descriptors. The record's fields behind the dimension table need not
// be aligned on a 64-bit host, so everything past the head is read with memcpy.
#pragma once

#include <cstdint>
#include <cstring>

#include "vrn90.h"

// Whether the descriptor has element_len: an array, version 2 on, or character data.
bool HasElementLength(const RTD* rtd);
int32_t VersionNumber(const RTD* rtd);

// The V2 fields' address: null below version 2; behind the dimension table of an array,
// behind element_len otherwise.
const unsigned char* get_v2_fields(const RTD* rtd);

template <typename T>
T ReadField(const void* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// One entry of an array's dimension table, counted from 0 in table order.
inline RTDDimension DimensionEntry(const RTD* rtd, int32_t index) {
    const auto* array = reinterpret_cast<const RTDArray*>(rtd);
    return ReadField<RTDDimension>(&array->dims[index]);
}
