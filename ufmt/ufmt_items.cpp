// The item routines of unformatted statements: the bytes of an item, moved between the
// caller's storage and the record, reversed on a unit that swaps.
//
// Without swapping every item is one call of writeItem or readItem straight from or into
// the caller's storage, a run of elements included. With swapping, numbers go through a
// stack area (a write) or are reversed where they were read (a read); characters and
// one-byte items never change.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/export.h"
#include "core/unit.h"
#include "desc/transfer_forms.h"
#include "format/format_control.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"
#include "ufmt/byte_order.h"
#include "ufmt/unformatted.h"

namespace {

constexpr int32_t kLargestElement = 16;
constexpr int32_t kVectorBytes = 16;
constexpr int32_t kStackSwapArea = 16384;  // a swapped run goes out in pieces of this size,
constexpr int32_t kSwapArea = 262144;      // or of this when it is longer
constexpr int32_t kReadPiece = 262144;

bool Swaps(const LocalContext* context, int32_t type, int32_t kind) {
    return context->unit != nullptr && context->unit->byteSwap && type != kTypeCharacter && kind > 1;
}

// A derived type swaps component by component, which the derived-type layer does.
bool SwapsDerived(const LocalContext* context) { return context->unit != nullptr && context->unit->byteSwap; }

void NoteAsynchronous(LocalContext* context, uint32_t typeWord) {
    context->itemAsync = (typeWord & kUfmtAsynchronous) != 0 && context->aioRequest != nullptr;
}

// Reverses every whole element of `kind` bytes among `count`; a complex value is its parts.
void ReverseElements(uint8_t* bytes, int32_t count, int32_t kind) {
    ReverseEach(bytes, static_cast<size_t>(count / kind), static_cast<uint32_t>(kind));
}

// A vector holds 16 >> (kind >> 1) elements as far as swapping goes: 8 of 2 bytes, 4 of 4,
// but only the first of two 8-byte elements and none of a 16-byte one. Files written so
// are read back so, and that is what keeps them compatible.
void ReverseVector(uint8_t* bytes, int32_t count, int32_t kind) {
    int32_t elements = kVectorBytes >> (kind >> 1);
    ReverseElements(bytes, std::min(count, elements * kind), kind);
}

// The element size must be one that can be reversed before it is copied anywhere.
void CheckSwapSize(int32_t kind) {
    if (kind > kLargestElement || !ValidTagWidth(static_cast<uint32_t>(kind))) {
        ElementSizeFault();
    }
}

bool Written(LocalContext* context, int32_t written, int32_t count) {
    if (written == count) return true;
    UfmtWriteError(context);
    return false;
}

bool Read(LocalContext* context, int32_t delivered, int32_t count) {
    if (delivered == count) return true;
    UfmtReadError(context);
    return false;
}

// One swapped number: through the stack, never in the caller's storage.
bool WriteSwapped(LocalContext* context, const void* item, int32_t kind, WriteItemRoutine write) {
    CheckSwapSize(kind);
    uint8_t area[kLargestElement];
    std::memcpy(area, item, static_cast<size_t>(kind));
    ReverseByteOrder(area, static_cast<uint32_t>(kind));
    return Written(context, write(context, area, kind), kind);
}

void WriteComplex(LocalContext* context, const uint8_t* item, int32_t length, int32_t kind) {
    bool swap = Swaps(context, kTypeComplex, kind);
    if (length == 2 * kind) {
        if (!swap) {
            Written(context, context->writeItem(context, item, length), length);
        } else {
            CheckSwapSize(kind);
            uint8_t area[2 * kLargestElement];
            std::memcpy(area, item, static_cast<size_t>(length));
            ReverseElements(area, length, kind);
            Written(context, context->writeItem(context, area, length), length);
        }
        return;
    }
    // The parts lie apart: the second at half the length. They reach the record side by side.
    if (context->aioRequest != nullptr) {
        AIOWriteSplitComplex(context, item, length, kind);
        return;
    }
    const uint8_t* parts[2] = {item, item + length / 2};
    for (const uint8_t* part : parts) {
        bool sent = swap ? WriteSwapped(context, part, kind, context->writeItem)
                         : Written(context, context->writeItem(context, part, kind), kind);
        if (!sent) return;
    }
}

void ReadComplex(LocalContext* context, uint8_t* item, int32_t length, int32_t kind) {
    bool swap = Swaps(context, kTypeComplex, kind);
    if (swap) CheckSwapSize(kind);
    if (length == 2 * kind) {
        if (Read(context, context->readItem(context, item, length), length) && swap) ReverseElements(item, length, kind);
        return;
    }
    if (context->aioRequest != nullptr) {
        AIOReadSplitComplex(context, item, length, kind);
        return;
    }
    uint8_t* parts[2] = {item, item + length / 2};
    for (uint8_t* part : parts) {
        if (!Read(context, IORead(context, part, kind), kind)) return;
        if (swap) ReverseByteOrder(part, static_cast<uint32_t>(kind));
    }
}

// The area a swapped run is reversed into on its way out: the context's own, kept from
// statement to statement, so that a long run leaves in few large writes; the stack's
// when that cannot be had.
uint8_t* SwapArea(LocalContext* context, uint8_t* fallback, int32_t* size) {
    if (context->ufmt_swap_area == nullptr) context->ufmt_swap_area = static_cast<uint8_t*>(std::malloc(kSwapArea));
    if (context->ufmt_swap_area == nullptr) return fallback;
    *size = kSwapArea;
    return context->ufmt_swap_area;
}

void WriteSwappedRun(LocalContext* context, const uint8_t* item, int32_t length, int32_t kind, int32_t step) {
    CheckSwapSize(kind);
    uint8_t stackArea[kStackSwapArea];
    int32_t size = kStackSwapArea;
    uint8_t* area = length > kStackSwapArea ? SwapArea(context, stackArea, &size) : stackArea;
    int32_t piece = std::max(step, size / step * step);
    for (int32_t done = 0; done < length;) {
        int32_t count = std::min(piece, length - done);
        int32_t whole = count / kind;
        CopyReversed(area, item + done, static_cast<size_t>(whole), static_cast<uint32_t>(kind));
        std::memcpy(area + whole * kind, item + done + whole * kind, static_cast<size_t>(count - whole * kind));
        if (!Written(context, context->writeItem(context, area, count), count)) return;
        done += count;
    }
}

// A swapped run is read in pieces, each reversed while it is still in the cache. The
// result is the bytes read.
int32_t ReadSwappedRun(LocalContext* context, uint8_t* item, int32_t length, int32_t kind) {
    int32_t piece = std::max(kind, kReadPiece / kind * kind);
    int32_t done = 0;
    while (done < length) {
        int32_t count = std::min(piece, length - done);
        int32_t got = context->readItem(context, item + done, count);
        if (got > 0) ReverseElements(item + done, got, kind);  // elements that came whole
        if (got > 0) done += got;
        if (got != count) break;
    }
    return done;
}

}  // namespace

VRN_EXPORT int32_t _vrnWriteUfmt(LocalContext* context, const void* item, const int32_t* length, const int32_t* kind,
                                 uint32_t typeWord) {
    if (context->itemsStopped) return context->status;
    NoteAsynchronous(context, typeWord);
    const auto* bytes = static_cast<const uint8_t*>(item);
    int32_t type = static_cast<int32_t>(typeWord & kUfmtTypeMask);
    int32_t n = *length;
    // The kind word of a derived type is the address of its table.
    if (type == kTypeDerived && (typeWord & kUfmtRun) && SwapsDerived(context)) {
        return UfmtDerivedRun(context, const_cast<void*>(item), n, kind, true);
    }
    int32_t k = type == kTypeDerived ? 0 : *kind;
    if (typeWord & kUfmtRun) {
        if (Swaps(context, type, k)) {
            WriteSwappedRun(context, bytes, n, k, type == kTypeComplex ? 2 * k : k);
        } else {
            Written(context, context->writeItem(context, bytes, n), n);
        }
        return context->status;
    }
    if (type == kTypeComplex) {
        WriteComplex(context, bytes, n, k);
        return context->status;
    }
    bool vector = (typeWord & kUfmtVector) != 0;
    int32_t count = type == kTypeCharacter || vector ? n : k;
    if (!Swaps(context, type, k)) {
        Written(context, context->writeItem(context, bytes, count), count);
    } else if (!vector) {
        WriteSwapped(context, bytes, k, context->writeItem);
    } else {
        CheckSwapSize(k);
        uint8_t area[kVectorBytes];
        int32_t head = std::min(count, kVectorBytes);
        std::memcpy(area, bytes, static_cast<size_t>(head));
        ReverseVector(area, head, k);
        if (Written(context, context->writeItem(context, area, head), head) && count > head) {
            Written(context, context->writeItem(context, bytes + head, count - head), count - head);
        }
    }
    return context->status;
}

VRN_EXPORT int32_t _vrnReadUfmt(LocalContext* context, void* item, const int32_t* length, const int32_t* kind,
                                uint32_t typeWord) {
    if (context->itemsStopped) return context->status;
    NoteAsynchronous(context, typeWord);
    auto* bytes = static_cast<uint8_t*>(item);
    int32_t type = static_cast<int32_t>(typeWord & kUfmtTypeMask);
    int32_t n = *length;
    if (type == kTypeDerived && (typeWord & kUfmtRun) && SwapsDerived(context)) {
        return UfmtDerivedRun(context, item, n, kind, false);
    }
    int32_t k = type == kTypeDerived ? 0 : *kind;
    if (type == kTypeComplex && !(typeWord & kUfmtRun)) {
        ReadComplex(context, bytes, n, k);
        return context->status;
    }
    bool vector = (typeWord & (kUfmtVector | kUfmtRun)) == kUfmtVector;
    bool run = (typeWord & kUfmtRun) != 0;
    int32_t count = run || type == kTypeCharacter || vector ? n : k;
    bool swap = Swaps(context, type, k);
    if (swap) CheckSwapSize(k);
    int32_t delivered;
    if (swap && run) {
        delivered = ReadSwappedRun(context, bytes, count, k);
    } else {
        delivered = context->readItem(context, bytes, count);
        if (swap && delivered > 0) {
            if (vector) {
                ReverseVector(bytes, delivered, k);
            } else {
                ReverseElements(bytes, std::min(delivered, k), k);
            }
        }
    }
    Read(context, delivered, count);
    return context->status;
}
