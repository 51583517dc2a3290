// Fuzzes the C descriptor procedures with arguments a careless C caller could pass: any
// bounds, strides, displacements, lengths and descriptor fields, over data that is really
// there. A call either fails with a code and leaves its result alone, or gives a descriptor
// every element of which lies inside the data (the address sanitizer checks each read).
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ISO_Fortran_binding.h"

namespace {

struct Bytes {
    const uint8_t* data;
    size_t size;
    template <typename T>
    T Take() {
        T value{};
        size_t n = size < sizeof value ? size : sizeof value;
        std::memcpy(&value, data, n);
        data += n;
        size -= n;
        return value;
    }
    // Mostly small numbers, now and then anything at all.
    CFI_index_t Index() {
        uint8_t kind = Take<uint8_t>();
        return kind < 230 ? static_cast<CFI_index_t>(static_cast<int8_t>(kind)) % 12 : Take<CFI_index_t>();
    }
};

typedef CFI_CDESC_T(CFI_MAX_RANK) AnyRank;

struct Descriptor {
    AnyRank storage;
    CFI_cdesc_t* get() { return reinterpret_cast<CFI_cdesc_t*>(&storage); }
};

// Reads every element of `d` through CFI_address, so that one outside the data is caught.
// Bounds near the ends of CFI_index_t are legal, but subscripts past them are not numbers:
// the walk stops there.
void ReadAll(const CFI_cdesc_t* d) {
    if (d->base_addr == nullptr) return;
    CFI_index_t offset[CFI_MAX_RANK] = {}, at[CFI_MAX_RANK];
    for (int i = 0; i < d->rank; ++i) {
        if (d->dim[i].extent <= 0) return;
    }
    volatile unsigned char sink = 0;
    while (true) {
        for (int i = 0; i < d->rank; ++i) {
            if (__builtin_add_overflow(d->dim[i].lower_bound, offset[i], &at[i])) return;
        }
        auto* element = static_cast<const unsigned char*>(CFI_address(d, at));
        if (element == nullptr) std::abort();  // a subscript inside the bounds must have an element
        for (size_t b = 0; b < d->elem_len; ++b) sink = sink + element[b];
        int i = 0;
        while (i < d->rank && ++offset[i] == d->dim[i].extent) offset[i++] = 0;
        if (i == d->rank) return;
    }
}

// Calls that fail must not write their result.
template <typename Call>
int Checked(CFI_cdesc_t* result, Call call) {
    Descriptor before;
    std::memcpy(&before.storage, result, sizeof(AnyRank));
    int code = call();
    if (code != CFI_SUCCESS && std::memcmp(&before.storage, result, sizeof(AnyRank)) != 0) std::abort();
    return code;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes in{data, size};
    // The data: an exact heap block, so that a read past it is a fault.
    int rank = 1 + in.Take<uint8_t>() % 4;
    CFI_index_t extents[4];
    size_t count = 1;
    for (int i = 0; i < rank; ++i) {
        extents[i] = 1 + in.Take<uint8_t>() % 6;
        count *= static_cast<size_t>(extents[i]);
    }
    std::vector<int64_t> block(count);
    Descriptor whole;
    if (CFI_establish(whole.get(), block.data(), CFI_attribute_other, CFI_type_int64_t, 0,
                      static_cast<CFI_rank_t>(rank), extents) != CFI_SUCCESS) {
        std::abort();
    }
    // A pointer to it with lower bounds of the input's choosing.
    Descriptor source;
    CFI_establish(source.get(), nullptr, CFI_attribute_pointer, CFI_type_int64_t, 0, static_cast<CFI_rank_t>(rank),
                  nullptr);
    CFI_index_t lower[4], upper[4], strides[4];
    for (int i = 0; i < rank; ++i) lower[i] = in.Index();
    if (CFI_setpointer(source.get(), whole.get(), lower) != CFI_SUCCESS) std::abort();

    // A section with any bounds and strides, into a result of any rank and attribute.
    int kept = 0;
    for (int i = 0; i < rank; ++i) {
        lower[i] = in.Index();
        upper[i] = in.Index();
        strides[i] = in.Index();
        kept += strides[i] != 0;
    }
    Descriptor section;
    CFI_attribute_t attribute = static_cast<CFI_attribute_t>(in.Take<uint8_t>() % 4);
    CFI_rank_t sectionRank = static_cast<CFI_rank_t>(in.Take<uint8_t>() % 3 == 0 ? in.Take<uint8_t>() % 6 : kept);
    if (CFI_establish(section.get(), nullptr, attribute, CFI_type_int64_t, 0, sectionRank, nullptr) == CFI_SUCCESS) {
        uint8_t omit = in.Take<uint8_t>();
        int code = Checked(section.get(), [&] {
            return CFI_section(section.get(), source.get(), omit & 1 ? nullptr : lower, omit & 2 ? nullptr : upper,
                               omit & 4 ? nullptr : strides);
        });
        if (code == CFI_SUCCESS) {
            ReadAll(section.get());
            // Any subscripts: an element, or null.
            CFI_index_t at[4];
            for (int i = 0; i < 4; ++i) at[i] = in.Index();
            if (auto* element = static_cast<volatile int64_t*>(CFI_address(section.get(), at))) (void)*element;
            (void)CFI_is_contiguous(section.get());
        }
    }

    // A part of each element: any displacement and length, as any type.
    Descriptor part;
    static const CFI_type_t kTypes[] = {CFI_type_char, CFI_type_int8_t, CFI_type_int32_t, CFI_type_double,
                                        CFI_type_struct, CFI_type_float_Complex};
    CFI_type_t type = kTypes[in.Take<uint8_t>() % 6];
    size_t partLength = in.Take<uint8_t>() % 12;
    if (CFI_establish(part.get(), nullptr, static_cast<CFI_attribute_t>(in.Take<uint8_t>() % 4), type,
                      partLength == 0 ? 1 : partLength, static_cast<CFI_rank_t>(rank), nullptr) == CFI_SUCCESS) {
        size_t displacement = in.Take<uint8_t>() < 240 ? in.Take<uint8_t>() % 10 : in.Take<size_t>();
        size_t length = in.Take<uint8_t>() % 10;
        if (Checked(part.get(), [&] { return CFI_select_part(part.get(), source.get(), displacement, length); }) ==
            CFI_SUCCESS) {
            ReadAll(part.get());
        }
    }

    // Allocation with small bounds of any order, then its release.
    Descriptor heap;
    CFI_establish(heap.get(), nullptr, CFI_attribute_allocatable, CFI_type_char, 1, static_cast<CFI_rank_t>(rank),
                  nullptr);
    for (int i = 0; i < rank; ++i) lower[i] = in.Take<int8_t>() % 8, upper[i] = in.Take<int8_t>() % 8;
    if (Checked(heap.get(), [&] { return CFI_allocate(heap.get(), lower, upper, in.Take<uint8_t>() % 5); }) ==
        CFI_SUCCESS) {
        ReadAll(heap.get());
        if (CFI_deallocate(heap.get()) != CFI_SUCCESS) std::abort();
    }
    return 0;
}
