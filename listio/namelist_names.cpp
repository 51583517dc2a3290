// Namelist input: what a name in the input stands for.
//
// The scanner reads the pieces of a designator one at a time and stops behind each, so
// that each is taken here before the next: the name, a subscript list A(2:8:2, 3), a
// substring C(1:4), a component %X. The subscripts are read by the scanner's integer
// grammar in its subscript mode, where ")" counts like ",". What the pieces select is
// laid out as a NamelistObject, over which the values are then read.
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "listio/list_scanner.h"
#include "listio/namelist.h"
#include "listio/namelist_read.h"
#include "vrn90.h"
#include "vrn90_keywords.h"

namespace {

constexpr uint32_t kClassComma = 4, kClassCloseParen = 21;

uint32_t P(const LocalContext* context, uint32_t point, uint32_t comma) {
    return context->modeDecimal == VRN_KEY_COMMA ? comma : point;
}

// One subscript value and the separator in front of it: "(" for the first, "," or ":".
struct Subscript {
    int64_t value;
    bool given;
    char before;
};
constexpr int32_t kMaxSubscripts = 3 * kNamelistMaxRank + 1;

bool Invalid(LocalContext* context) {
    ErrorHandler(kClassConversion, kKindError, 45, 45, 0u);
    context->itemsStopped = 1;
    return false;
}

bool Scan(LocalContext* context) {
    if (LDScan(context, 0, 0) && context->status == 0) return true;
    context->itemsStopped = 1;
    return false;
}

// The list from behind "(" up to ")". false when the statement stops.
bool ReadSubscripts(LocalContext* context, Subscript* list, int32_t* count) {
    *count = 0;
    context->ld_in_subscript = 1;
    context->ld_item_type = 0;
    context->ld_class_map[kClassCloseParen] = kClassComma;
    bool ok = true;
    char before = '(';
    for (;;) {
        if (!Scan(context)) {
            ok = false;
            break;
        }
        if (context->ld_state == P(context, 59, 114)) break;  // ")" closed the list
        if (*count == kMaxSubscripts) {
            ok = Invalid(context);
            break;
        }
        list[(*count)++] = Subscript{context->ld_int_value, context->ld_null_value == 0, before};
        // The byte that ends this value is the one in front of the next.
        before = static_cast<char>(context->ld_pending_char);
        if (context->ld_overflow_size != 0) {
            ok = Invalid(context);
            break;
        }
    }
    context->ld_class_map[kClassCloseParen] = kClassCloseParen;
    context->ld_in_subscript = 0;
    return ok;
}

// A triplet lo:hi:step, or a single subscript, of one dimension.
struct Range {
    int64_t low, high, step;
    bool single;
};

// Splits the list into one range per dimension (defaults from `lower` and `upper`).
bool Ranges(const Subscript* list, int32_t count, int32_t rank, const int64_t* lower, const int64_t* extent,
            Range* ranges) {
    int32_t dimension = 0;
    int32_t i = 0;
    while (i < count) {
        if (dimension == rank) return false;
        Range& range = ranges[dimension];
        int64_t upper = lower[dimension] + extent[dimension] - 1;
        range = Range{lower[dimension], upper, 1, true};
        const Subscript* parts[3] = {&list[i], nullptr, nullptr};
        int32_t n = 1;
        ++i;
        while (i < count && list[i].before == ':') {
            if (n == 3) return false;
            parts[n++] = &list[i++];
        }
        if (n == 1) {
            if (!parts[0]->given) return false;
            range.low = range.high = parts[0]->value;
        } else {
            range.single = false;
            if (parts[0]->given) range.low = parts[0]->value;
            if (parts[1]->given) range.high = parts[1]->value;
            if (n == 3) {
                if (!parts[2]->given || parts[2]->value == 0) return false;
                range.step = parts[2]->value;
            }
        }
        ++dimension;
    }
    return dimension == rank;
}

// The elements of lo:hi:step, counted without overflow whatever the three values.
int64_t SectionExtent(const Range& range) {
    uint64_t distance, stride;
    if (range.step > 0) {
        if (range.high < range.low) return 0;
        distance = static_cast<uint64_t>(range.high) - static_cast<uint64_t>(range.low);
        stride = static_cast<uint64_t>(range.step);
    } else {
        if (range.low < range.high) return 0;
        distance = static_cast<uint64_t>(range.low) - static_cast<uint64_t>(range.high);
        stride = 0 - static_cast<uint64_t>(range.step);
    }
    uint64_t count = distance / stride + 1;
    return count > static_cast<uint64_t>(INT64_MAX) ? INT64_MAX : static_cast<int64_t>(count);
}

bool InBounds(int64_t value, int64_t lower, int64_t extent) { return value >= lower && value < lower + extent; }

// The section of `object` that the subscripts select.
bool ApplySubscripts(const Subscript* list, int32_t count, NamelistObject* object) {
    Range ranges[kNamelistMaxRank];
    if (!Ranges(list, count, object->rank, object->lower, object->extent, ranges)) return false;
    NamelistObject section = *object;
    section.rank = 0;
    section.whole = false;
    for (int32_t d = 0; d < object->rank; ++d) {
        const Range& range = ranges[d];
        int64_t extent = range.single ? 1 : SectionExtent(range);
        if (extent > 0) {
            // Both ends inside the dimension; a section cannot have more elements than it.
            int64_t span, last;
            if (!InBounds(range.low, object->lower[d], object->extent[d]) || extent > object->extent[d] ||
                __builtin_mul_overflow(extent - 1, range.step, &span) ||
                __builtin_add_overflow(range.low, span, &last) ||
                !InBounds(last, object->lower[d], object->extent[d])) {
                return false;
            }
            section.base += (range.low - object->lower[d]) * object->stride[d];
        }
        if (range.single) continue;
        section.lower[section.rank] = 1;
        section.extent[section.rank] = extent;
        // With two elements or more the step lies within the dimension; with fewer it
        // takes no part and may be anything.
        section.stride[section.rank] = extent > 1 ? range.step * object->stride[d] : object->stride[d];
        ++section.rank;
    }
    *object = section;
    return true;
}

bool ApplySubstring(const Subscript* list, int32_t count, NamelistObject* object) {
    if (object->type != 2 || count != 2 || list[1].before != ':') return false;
    int64_t first = list[0].given ? list[0].value : 1;
    int64_t last = list[1].given ? list[1].value : object->length;
    if (last >= first && (first < 1 || last > object->length)) return false;
    object->base += last >= first ? first - 1 : 0;
    object->length = last >= first ? static_cast<int32_t>(last - first + 1) : 0;
    object->whole = false;
    return true;
}

bool NotAMember(LocalContext* context) {
    ErrorHandler(kClassConversion, kKindError, 92, 92, 0u);
    context->itemsStopped = 1;
    return false;
}

// The component named in the buffer, of each element of `object`.
bool ApplyComponent(LocalContext* context, NamelistObject* object) {
    const char* name = context->ld_name_start;
    int32_t length = context->ld_name_length;
    if (object->type != 6 || object->table == nullptr || object->names == nullptr ||
        object->names->components == nullptr) {
        return NotAMember(context);
    }
    for (uintptr_t i = 0; i < object->table->count; ++i) {
        const VrnNamelistComponent& component = object->names->components[i];
        if (!SameName(name, length, component.name, component.nameLength)) continue;
        NamelistObject part;
        ComponentObject(*object, object->base, static_cast<uint32_t>(i), true, &part);
        if (object->rank > 0) {
            // Only one part of a designator may be an array: the component of each element.
            if (part.rank > 0) return Invalid(context);
            part.rank = object->rank;
            for (int32_t d = 0; d < object->rank; ++d) {
                part.lower[d] = object->lower[d];
                part.extent[d] = object->extent[d];
                part.stride[d] = object->stride[d];
            }
        }
        *object = part;
        return true;
    }
    return NotAMember(context);
}

}  // namespace

bool ResolveDesignator(LocalContext* context, const VrnNamelistGroup* group, NamelistObject* object) {
    const char* name = context->ld_name_start;
    int32_t length = context->ld_name_length;
    const VrnNamelistMember* member = nullptr;
    for (uint32_t i = 0; i < group->count; ++i) {
        if (SameName(name, length, group->members[i].name, group->members[i].nameLength)) {
            member = &group->members[i];
            break;
        }
    }
    if (member == nullptr || !MemberObject(*member, true, object)) return NotAMember(context);

    bool subscripted = false, substring = false;
    for (;;) {
        uint32_t state = context->ld_state;
        if (state == P(context, 49, 105)) {
            Subscript list[kMaxSubscripts];
            int32_t count;
            if (!ReadSubscripts(context, list, &count)) return false;
            // An array takes subscripts first; a character scalar or element a substring.
            bool ok;
            if (object->rank > 0 && !subscripted) {
                ok = ApplySubscripts(list, count, object);
                subscripted = true;
            } else {
                ok = !substring && ApplySubstring(list, count, object);
                substring = true;
            }
            if (!ok) return Invalid(context);
            // What follows the ")": another list, a component, or the values.
            if (!Scan(context)) return false;
            continue;
        }
        if (state == P(context, 50, 106)) {
            if (substring) return Invalid(context);
            // The component of each element of an array takes no subscripts of its own.
            bool eachElement = object->rank > 0;
            if (!Scan(context) || !ApplyComponent(context, object)) return false;
            subscripted = eachElement;
            continue;
        }
        return true;
    }
}
