// The objects of a namelist group: members, components and their elements.
#include <cstring>

#include "core/context.h"
#include "desc/array_walk.h"
#include "desc/rtd.h"
#include "desc/transfer_forms.h"
#include "listio/namelist.h"

namespace {

// Shape from an array RTD, whose table is held with Fortran dimension 1 last.
void ShapeFromDescriptor(const RTD* rtd, NamelistObject* object) {
    const auto* array = reinterpret_cast<const RTDArray*>(rtd);
    int32_t rank = array->rank;
    if (rank < 0) rank = 0;
    if (rank > kNamelistMaxRank) rank = kNamelistMaxRank;
    object->rank = rank;
    for (int32_t d = 0; d < rank; ++d) {
        RTDDimension entry = DimensionEntry(rtd, rank - 1 - d);
        object->lower[d] = entry.low_bound;
        object->extent[d] = entry.extent;
        object->stride[d] = entry.multiplier;
    }
}

int32_t Upper(int byte) { return byte >= 'a' && byte <= 'z' ? byte - 32 : byte; }

}  // namespace

int32_t NamelistObject::ElementSize() const {
    switch (type) {
    case 2: return length;
    case 5: return 2 * kind;
    case 6: return table != nullptr ? static_cast<int32_t>(table->size) : 0;
    case 3: return 1;
    default: return kind;
    }
}

bool SameName(const char* text, int32_t length, const char* name, uint32_t nameLength) {
    if (length < 0 || static_cast<uint32_t>(length) != nameLength) return false;
    for (int32_t i = 0; i < length; ++i) {
        if (Upper(static_cast<unsigned char>(text[i])) != Upper(static_cast<unsigned char>(name[i]))) return false;
    }
    return true;
}

bool MemberObject(const VrnNamelistMember& member, bool reading, NamelistObject* object) {
    *object = NamelistObject{};
    object->type = member.type;
    object->kind = member.type == 3 ? 1 : member.kind;
    object->length = member.length;
    if (member.type == 6 && member.derived != nullptr) {
        object->table = member.derived->table;
        object->dtio = reading ? member.derived->readDtio : member.derived->writeDtio;
        object->names = member.derived;
    }
    if (member.rtd == nullptr) {
        object->base = static_cast<char*>(member.address);
        return object->base != nullptr;
    }
    const auto* rtd = static_cast<const RTD*>(member.rtd);
    object->base = reinterpret_cast<char*>(rtd->base_ptr);
    if (object->base == nullptr) return false;  // not allocated, not associated
    if (member.type == 2 && object->length == 0 && HasElementLength(rtd)) object->length = rtd->element_len;
    if (rtd->header.dscr_type == RTD_ARRAY) ShapeFromDescriptor(rtd, object);
    return true;
}

void ComponentObject(const NamelistObject& parent, char* element, uint32_t component, bool reading,
                     NamelistObject* object) {
    *object = NamelistObject{};
    const VrnDTRow& row = parent.table->rows[component];
    uint32_t typeWord = static_cast<uint32_t>(row.typeWord);
    object->type = typeWord & kArrayTypeMask;
    object->whole = false;
    const VrnNamelistComponent* named = parent.names != nullptr && parent.names->components != nullptr
                                            ? &parent.names->components[component]
                                            : nullptr;
    if (object->type == 6) {
        object->table = reinterpret_cast<const VrnDTTable*>(row.kind);
        // The defined procedures of a component come with its row of the parent's table.
        if (parent.dtio != nullptr) object->dtio = ComponentTypeTable(&parent.dtio[1 + component]);
        object->names = named != nullptr ? named->type : nullptr;
    } else {
        object->kind = object->type == 3 ? 1 : static_cast<int32_t>(row.kind);
    }
    (void)reading;
    // A character component's kind word is the length of one of its elements.
    if (object->type == 2) object->length = static_cast<int32_t>(row.kind);
    object->base = element + row.offset;
    if (typeWord & kArrayDescribed) {
        // The descriptor gives the shape; the data is at the component's offset, as the
        // derived-type transfer takes it.
        const auto* rtd = reinterpret_cast<const RTD*>(row.length);
        if (object->type == 2) object->length = ReadField<int32_t>(&rtd->element_len);
        ShapeFromDescriptor(rtd, object);
        return;
    }
    if (!(typeWord & kArrayRun)) return;
    // A run: its bytes are in the length word, its shape, when it has more than one
    // dimension or other bounds, with the component's name.
    int64_t size = object->ElementSize();
    if (named != nullptr && named->shape != nullptr) {
        ShapeFromDescriptor(static_cast<const RTD*>(named->shape), object);
        // The run is dense whatever strides the shape's descriptor holds.
        int64_t step = size;
        for (int32_t d = 0; d < object->rank; ++d) {
            object->stride[d] = step;
            step *= object->extent[d];
        }
        return;
    }
    object->rank = 1;
    object->lower[0] = 1;
    object->extent[0] = size > 0 ? static_cast<int64_t>(row.length) / size : 0;
    object->stride[0] = size;
}

int32_t ForEachElement(LocalContext* context, const NamelistObject& object, NamelistVisit visit) {
    if (object.rank == 0) return visit(context, object.base, object);
    int64_t count = object.Count();
    if (count == 0) return 0;
    uint32_t savedActive = context->arrayActive;
    int32_t savedIndex = context->arrayIndex;
    context->arrayActive = 1;
    context->arrayIndex = 0;
    context->array_abandon = 0;
    int64_t position[kNamelistMaxRank] = {};
    char* element = object.base;
    int32_t stopped = 0;
    for (int64_t n = 0; n < count; ++n) {
        context->arrayIndex = static_cast<int32_t>(n + 1);
        if (visit(context, element, object) != 0 || context->array_abandon || context->itemsStopped) {
            stopped = 1;
            break;
        }
        // The next element in array element order: dimension 1 fastest.
        for (int32_t d = 0; d < object.rank; ++d) {
            if (++position[d] < object.extent[d]) {
                element += object.stride[d];
                break;
            }
            element -= object.stride[d] * (object.extent[d] - 1);
            position[d] = 0;
        }
    }
    if (stopped) {
        context->arrayActive = 0;
        context->arrayIndex = 0;
    } else {
        context->arrayActive = savedActive;
        context->arrayIndex = savedIndex;
    }
    return stopped;
}
