#include "desc/array_walk.h"

#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "desc/rtd.h"
#include "format/format_control.h"

int32_t KindOf(int32_t type, const void* kindWord) {
    if (kindWord == nullptr || type == kTypeDerived) return 0;
    return ReadField<int32_t>(kindWord);
}

const VrnDTTable* DerivedTable(const void* kindWord) {
    if (kindWord == nullptr) return nullptr;
    return reinterpret_cast<const VrnDTTable*>(ReadField<uintptr_t>(kindWord));
}

int32_t ArrayStepSize(int32_t type, const void* kindWord, int32_t elementLength) {
    switch (type) {
    case kTypeCharacter: return elementLength;
    case kTypeComplex: return 2 * KindOf(type, kindWord);
    case kTypeDerived: {
        const VrnDTTable* table = DerivedTable(kindWord);
        return table != nullptr ? static_cast<int32_t>(table->size) : 0;
    }
    default: return KindOf(type, kindWord);
    }
}

namespace {

const RTDArray* ArrayOf(const void* rtd) { return static_cast<const RTDArray*>(rtd); }

int32_t RankOf(const RTDArray* rtd) { return ReadField<int32_t>(&rtd->rank); }

bool AnyEmpty(const RTDArray* rtd, int32_t rank) {
    for (int32_t i = 0; i < rank; ++i) {
        if (DimensionEntry(reinterpret_cast<const RTD*>(rtd), i).extent < 1) return true;
    }
    return false;
}

}  // namespace

int32_t CheckSegment(const uintptr_t* rtdAddress, const void* kindWord, uint32_t typeWord, int32_t characterLength,
                     int32_t fallbackLength) {
    const RTDArray* rtd = ArrayOf(reinterpret_cast<const void*>(*rtdAddress));
    const RTD* head = reinterpret_cast<const RTD*>(rtd);
    int32_t rank = RankOf(rtd);
    if (rank < 1 || rank > RTD_MAX_RANK) return 0;
    int32_t type = static_cast<int32_t>(typeWord & kArrayTypeMask);
    int32_t size = ArrayStepSize(type, kindWord, characterLength);
    if (size < 1) size = fallbackLength;
    int32_t elementLength = ReadField<int32_t>(&rtd->element_len);
    RTDDimension inner = DimensionEntry(head, rank - 1);
    if (inner.extent == 1) {
        if (rank == 1) return 0;
        if (DimensionEntry(head, rank - 2).multiplier > elementLength) return 0;
    }
    for (int32_t i = 0; i < rank; ++i) {
        if (DimensionEntry(head, i).multiplier < 0) return 0;
    }
    if (size < 1 || elementLength != size || inner.multiplier != elementLength) return 0;
    return size;
}

int32_t IterateSegment(LocalContext* context, void* address, const RTDArray* rtd, const ItemShape& shape,
                       int32_t elementSize, ItemRoutine routine) {
    const RTD* head = reinterpret_cast<const RTD*>(rtd);
    int32_t rank = RankOf(rtd);
    if (rank < 1 || rank > RTD_MAX_RANK || AnyEmpty(rtd, rank)) return context->status;
    // An odometer over the outer dimensions, in table order (the innermost is the last
    // entry and is the run itself); fixed arrays keep it free of any allocation.
    int32_t extent[RTD_MAX_RANK];
    int32_t multiplier[RTD_MAX_RANK];
    int32_t position[RTD_MAX_RANK] = {};
    for (int32_t i = 0; i < rank; ++i) {
        RTDDimension entry = DimensionEntry(head, i);
        extent[i] = entry.extent;
        multiplier[i] = entry.multiplier;
    }
    ItemShape run = shape;
    run.length = extent[rank - 1] * elementSize;
    run.typeWord = (shape.typeWord & ~kArrayBits) | kArrayRun;
    char* row = static_cast<char*>(address);
    for (;;) {
        int32_t result = routine(context, row, run);
        if (result != 0 || context->itemsStopped) return result;
        int32_t d = rank - 2;
        while (d >= 0 && position[d] == extent[d] - 1) {
            row -= static_cast<intptr_t>(position[d]) * multiplier[d];
            position[d] = 0;
            --d;
        }
        if (d < 0) return context->status;
        ++position[d];
        row += multiplier[d];
    }
}

// ---- The iterator over a described array ----

namespace {

struct Level {
    char* start;  // address of the first element of the current row at this level
    int32_t position;
    int32_t extent;
    int32_t multiplier;
};

struct NCIterator {
    const RTDArray* rtd;
    uint32_t remaining;
    char* current;
    int32_t last;  // index of the innermost table entry
    int32_t innerMultiplier;
    int32_t innerPosition;  // 1-based
    Level levels[];
};

}  // namespace

void* GetNCIterator(const void* rtd, char* base) {
    const RTDArray* array = ArrayOf(rtd);
    int32_t rank = RankOf(array);
    bool valid = rank >= 1 && rank <= RTD_MAX_RANK;
    int32_t levels = valid ? rank : 1;
    auto* iterator = static_cast<NCIterator*>(std::malloc(sizeof(NCIterator) + sizeof(Level) * levels));
    if (iterator == nullptr) return nullptr;
    iterator->rtd = array;
    iterator->current = base;
    iterator->last = levels - 1;
    iterator->innerPosition = 1;
    for (int32_t i = 0; i < levels; ++i) {
        RTDDimension entry = valid ? DimensionEntry(reinterpret_cast<const RTD*>(rtd), i) : RTDDimension{1, 0, 0};
        iterator->levels[i] = Level{base, 0, entry.extent, entry.multiplier};
    }
    iterator->innerMultiplier = iterator->levels[levels - 1].multiplier;
    // An array with an empty dimension has no element at all.
    iterator->remaining = valid && !AnyEmpty(array, rank);
    return iterator;
}

char* NCNextElement(void* opaque) {
    auto* it = static_cast<NCIterator*>(opaque);
    if (!it->remaining) return nullptr;
    char* element = it->current;
    if (it->innerPosition < it->levels[it->last].extent) {
        ++it->innerPosition;
        it->current += it->innerMultiplier;
        return element;
    }
    for (int32_t d = it->last - 1; d >= 0; --d) {
        Level& level = it->levels[d];
        if (level.position + 1 < level.extent) {
            ++level.position;
            level.start += level.multiplier;
            for (int32_t inner = d + 1; inner <= it->last; ++inner) {
                it->levels[inner].start = level.start;
                it->levels[inner].position = 0;
            }
            it->current = level.start;
            it->innerPosition = 1;
            return element;
        }
    }
    it->remaining = 0;
    return element;
}

char* NCNextSegment(void* opaque, int32_t elementSize, int32_t* length) {
    auto* it = static_cast<NCIterator*>(opaque);
    char* start = NCNextElement(it);
    if (start == nullptr) return nullptr;
    char* end = start + elementSize;
    while (it->remaining && it->current == end) {
        NCNextElement(it);
        end += elementSize;
    }
    *length = static_cast<int32_t>(end - start);
    return start;
}

int32_t NCElementLength(const void* rtd) { return ReadField<int32_t>(&ArrayOf(rtd)->element_len); }

// ---- The general walk ----

namespace {

// Restores the array fields of an outer walk on normal completion; a stop leaves them 0.
class ArrayScope {
public:
    explicit ArrayScope(LocalContext* context)
        : context_(context), savedActive_(context->arrayActive), savedIndex_(context->arrayIndex) {
        context->arrayActive = 1;
        context->arrayIndex = 0;
        context->array_abandon = 0;
    }
    ~ArrayScope() {
        if (stopped_) {
            context_->arrayActive = 0;
            context_->arrayIndex = 0;
        } else {
            context_->arrayActive = savedActive_;
            context_->arrayIndex = savedIndex_;
        }
    }
    // Whether the walk must end after a call that returned `result`.
    bool Stop(int32_t result) {
        stopped_ = result != 0 || context_->array_abandon || context_->itemsStopped;
        return stopped_;
    }

private:
    LocalContext* context_;
    uint32_t savedActive_;
    int32_t savedIndex_;
    bool stopped_ = false;
};

struct FreeOnExit {
    void* memory;
    ~FreeOnExit() { std::free(memory); }
};

}  // namespace

int32_t IterateArray(LocalContext* context, void* address, const uintptr_t* lengthWord, const ItemShape& shape,
                     ItemRoutine routine, bool merge) {
    ArrayScope scope(context);
    int32_t type = static_cast<int32_t>(shape.typeWord & kArrayTypeMask);
    int32_t size = ArrayStepSize(type, shape.kindWord, shape.elementLength);
    ItemShape element = shape;
    element.typeWord = shape.typeWord & ~kArrayBits;
    element.length = size;

    if (!(shape.typeWord & kArrayBits)) {
        element.length = shape.length;
        scope.Stop(routine(context, address, element));
        return context->status;
    }
    if (shape.typeWord & kArrayDescribed) {
        const void* rtd = reinterpret_cast<const void*>(*lengthWord);
        FreeOnExit iterator{GetNCIterator(rtd, static_cast<char*>(address))};
        if (iterator.memory == nullptr) {
            ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
            if (context->unit != nullptr) context->unit->permanentError = 1;
            scope.Stop(1);
            return context->status;
        }
        if (merge && size > 0 && NCElementLength(rtd) == size) {
            ItemShape run = element;
            run.typeWord |= kArrayRun;
            while (char* start = NCNextSegment(iterator.memory, size, &run.length)) {
                if (scope.Stop(routine(context, start, run))) break;
            }
        } else {
            while (char* at = NCNextElement(iterator.memory)) {
                ++context->arrayIndex;
                if (scope.Stop(routine(context, at, element))) break;
            }
        }
        return context->status;
    }
    if (size < 1) return context->status;
    char* at = static_cast<char*>(address);
    char* end = at + *lengthWord;
    for (; at < end; at += size) {
        ++context->arrayIndex;
        if (scope.Stop(routine(context, at, element))) break;
    }
    return context->status;
}
