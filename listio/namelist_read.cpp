// Namelist READ: find "&GROUP", then take "name = values" until "/" or "&END".
//
// The scanner does the reading (its namelist states find the group, the names and the
// end); this file drives it: after each name it resolves what the name selects, reads
// the values into its elements with the list-directed item routines, and checks that no
// values are left over. A name that comes where a value could stand ends the values of
// the object before it early; the scanner hands such a name back, either pending or to
// be read again from its buffer.
#include "core/context.h"
#include "core/errors.h"
#include "core/options.h"
#include "listio/list_scanner.h"
#include "listio/listio.h"
#include "listio/namelist.h"
#include "listio/namelist_read.h"
#include "vrn90.h"
#include "vrn90_keywords.h"

namespace {

uint32_t P(const LocalContext* context, uint32_t point, uint32_t comma) {
    return context->modeDecimal == VRN_KEY_COMMA ? comma : point;
}

bool Stopped(LocalContext* context) {
    if (context->status != 0) context->itemsStopped = 1;
    return context->itemsStopped != 0;
}

int32_t ReadElement(LocalContext* context, char* element, const NamelistObject& object) {
    int32_t kind = object.kind;
    switch (object.type) {
    case 0: _vrnReadLDInt(context, element, 0, &kind); break;
    case 1: _vrnReadLDLog(context, element, 0, &kind); break;
    case 2: _vrnReadLDChar(context, element, &object.length); break;
    case 3: _vrnReadLDByte(context, element, 0, &kind); break;
    case 4: _vrnReadLDReal(context, element, 0, &kind); break;
    case 5: {
        int32_t total = 2 * kind;
        _vrnReadLDCmplx(context, element, &total, &kind);
        break;
    }
    default:
        if (object.dtio != nullptr) {
            _vrnReadLDDT_DTIO(context, element, 0, &object.table, &object.dtio);
        } else {
            _vrnReadLDDT(context, element, 0, &object.table);
        }
        // The components ended early at a name: so does the array.
        if (context->ld_next_name) context->array_abandon = 1;
        break;
    }
    return Stopped(context) ? 1 : 0;
}

// The type to look ahead with behind an object's last value: one whose words (T, F,
// NaN, Inf) are values for it, or character, for which any word is the next name.
uint32_t LookAheadType(uint32_t type) { return type == 1 || type == 4 ? type : 2; }

// Behind the values of a filled object only a name, "/" or "&END" may follow: values
// left of a repeat count, or further values, are message 121. Null values are let
// pass. false when the statement ends here.
bool NoValuesLeft(LocalContext* context, uint32_t type) {
    for (;;) {
        if (context->ld_repeat > 0 && !context->ld_null_value) {
            context->ld_repeat = 0;
            if (ErrorHandler(kClassConversion, kKindError, 121, 121, 0u) != kRecover) {
                context->itemsStopped = 1;
                return false;
            }
        }
        context->ld_repeat = 0;
        context->ld_item_type = LookAheadType(type);
        context->ld_char_room = 0;
        context->ld_next_name = 0;
        context->array_abandon = 0;
        if (!LDScan(context, 0, 0) || Stopped(context)) {
            context->itemsStopped = 1;
            return false;
        }
        if (context->ld_next_name || context->array_abandon) return true;
        if (context->ld_null_value) continue;
        if (ErrorHandler(kClassConversion, kKindError, 121, 121, 0u) != kRecover) {
            context->itemsStopped = 1;
            return false;
        }
    }
}

void ReadObjects(LocalContext* context, const VrnNamelistGroup* group) {
    bool replay = false;
    for (;;) {
        // A name, or the end of the group. A name that the values ran into is read again
        // from the buffer where the scanner rewound to it.
        if (!LDScan(context, replay ? 1 : 0, 0) || Stopped(context)) {
            context->itemsStopped = 1;
            return;
        }
        NamelistObject object;
        if (!ResolveDesignator(context, group, &object) || Stopped(context)) return;
        context->ld_repeat = 0;
        context->ld_next_name = 0;
        context->array_abandon = 0;
        ForEachElement(context, object, ReadElement);
        if (Stopped(context)) return;
        if (!context->array_abandon && !NoValuesLeft(context, object.type)) return;
        // The name's first byte is pending, or, where the scanner rewound (a word that
        // turned out to be a name, a NaN that was not one), the name is still in its
        // buffer, to be read again from there.
        replay = context->ld_rescan_cursor < context->ld_rescan_buffer + context->ld_rescan_fill;
        context->ld_next_name = 0;
        context->array_abandon = 0;
        context->ld_state = P(context, 55, 110);
    }
}

int32_t EndIOReadNl(LocalContext* context) { return EndIOReadLd(context); }

}  // namespace

int32_t BeginIOReadNl(LocalContext* context, void* groupArgument) {
    const auto* group = static_cast<const VrnNamelistGroup*>(groupArgument);
    if (context->ld_rescan_buffer == nullptr && !LDReadInit(context)) {
        context->itemsStopped = 1;
        return context->status;
    }
    context->ld_repeat = 0;
    LDStartScan(context);
    context->ld_in_namelist = 1;
    // Blanks in numbers are zeros only where the connection asks for it (BLANK='ZERO').
    context->ld_blank_zero = context->modeBlank == VRN_KEY_ZERO ? 1 : 0;
    context->ld_next_name = 0;
    context->array_abandon = 0;
    context->nl_name_pending = 0;
    context->nl_equal_seen = 0;
    context->nl_end_seen = 0;
    if (!context->dtioChild) context->endRoutine = EndIOReadNl;
    if (group == nullptr) {
        context->itemsStopped = 1;
        return context->status;
    }
    context->nl_group_name = group->name;
    context->nl_group_length = static_cast<int32_t>(group->nameLength);
    // Records up to "&GROUP" (or "$GROUP") are passed over; the end of the file before
    // it is the end-of-file condition.
    context->ld_item_type = 2;
    context->ld_state = P(context, 46, 102);
    if (!LDScan(context, 0, 0) || Stopped(context)) {
        context->itemsStopped = 1;
        return context->status;
    }
    ReadObjects(context, group);
    context->nl_group_name = nullptr;
    return context->status;
}
