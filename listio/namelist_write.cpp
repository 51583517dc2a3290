// Namelist WRITE: "&GROUP", each object as NAME=values, then "/".
//
// The values are laid out by the list-directed item routines with the namelist rules
// switched on (a comma between values, a blank at the start of a continued character
// value), so that a number looks the same in both. The layout around them:
//
//   &GROUP                  " &GROUP" under NAMELIST=OLD, where column 1 is not read
//    N=10,
//    X=1.500000000, 2.500000000,
//    T%NAME='abc',          components of a derived-type scalar by their names
//    /                      " &END" under NAMELIST=OLD
//
// With the statement's namelist output rule (option bit 9) the objects follow one
// another on a record, which breaks only when full.
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/options.h"
#include "listio/listio.h"
#include "listio/namelist.h"
#include "transport/transport.h"
#include "vrn90.h"
#include "vrn90_keywords.h"

namespace {

constexpr int32_t kMaxDesignator = 1024;

struct Writer {
    LocalContext* context;
    bool compact;         // objects follow one another on a record
    bool firstObject = true;
    char designator[kMaxDesignator];
    int32_t designatorLength = 0;
};

bool Put(LocalContext* context, const char* bytes, int32_t count) {
    if (context->itemsStopped) return false;
    if (IOWrite(context, bytes, count) == count) return true;
    context->itemsStopped = 1;
    return false;
}

// Text that must stand on one record: here when it fits, else on the next.
bool PutWhole(LocalContext* context, const char* bytes, int32_t count) {
    if (count >= context->recordMax) {
        bool internal = context->unit == nullptr;
        ErrorHandler(kClassConversion, kKindError, 158, internal ? 5 : 4, 0u);
        context->itemsStopped = 1;
        return false;
    }
    if (count > context->recordMax - context->column && !LdNewRecord(context, true)) return false;
    return Put(context, bytes, count);
}

// "NAME=" with the name in upper case, where the next object begins.
bool BeginObject(Writer* writer) {
    LocalContext* context = writer->context;
    char text[kMaxDesignator + 1];
    int32_t length = writer->designatorLength;
    for (int32_t i = 0; i < length; ++i) {
        char byte = writer->designator[i];
        text[i] = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 32) : byte;
    }
    text[length++] = '=';
    if (!writer->compact || writer->firstObject) {
        if (!LdNewRecord(context, true)) return false;
    } else if (context->column < context->recordMax && !Put(context, " ", 1)) {
        return false;
    }
    writer->firstObject = false;
    if (!PutWhole(context, text, length)) return false;
    // The first value follows the "=" directly.
    context->ld_first_item = 1;
    context->ld_skip_separator = 0;
    context->ld_last_was_char = 0;
    return true;
}

// The comma behind an object's values, where the record has room for it.
void EndObject(LocalContext* context) {
    if (context->itemsStopped || context->column >= context->recordMax) return;
    char separator = context->ldSeparator;
    Put(context, &separator, 1);
}

int32_t WriteElement(LocalContext* context, char* element, const NamelistObject& object) {
    int32_t kind = object.kind;
    switch (object.type) {
    case 0: _vrnWriteLDInt(context, element, 0, &kind); break;
    case 1: _vrnWriteLDLog(context, element, 0, &kind); break;
    case 2: _vrnWriteLDChar(context, element, &object.length); break;
    case 3: _vrnWriteLDByte(context, element); break;
    case 4: _vrnWriteLDReal(context, element, 0, &kind); break;
    case 5: {
        int32_t total = 2 * kind;
        _vrnWriteLDCmplx(context, element, &total, &kind);
        break;
    }
    default:
        if (object.dtio != nullptr) {
            _vrnWriteLDDT_DTIO(context, element, 0, &object.table, &object.dtio);
        } else {
            _vrnWriteLDDT(context, element, 0, &object.table);
        }
        break;
    }
    return context->itemsStopped;
}

// Appends "%name" or the member's name to the designator; false when it has no room.
bool PushName(Writer* writer, const char* name, uint32_t length, bool component) {
    int32_t need = static_cast<int32_t>(length) + (component ? 1 : 0);
    if (writer->designatorLength + need > kMaxDesignator) return false;
    if (component) writer->designator[writer->designatorLength++] = '%';
    std::memcpy(writer->designator + writer->designatorLength, name, length);
    writer->designatorLength += static_cast<int32_t>(length);
    return true;
}

void WriteObject(Writer* writer, const NamelistObject& object) {
    LocalContext* context = writer->context;
    bool byComponents = object.type == 6 && object.rank == 0 && object.table != nullptr &&
                        object.names != nullptr && object.names->components != nullptr &&
                        (object.dtio == nullptr || object.dtio->procedure == 0);
    if (!byComponents) {
        if (!BeginObject(writer)) return;
        ForEachElement(context, object, WriteElement);
        EndObject(context);
        return;
    }
    // A derived-type scalar: each component under its own name, so that a reader can
    // take them one by one and a program may leave some out.
    int32_t mark = writer->designatorLength;
    for (uintptr_t i = 0; i < object.table->count && !context->itemsStopped; ++i) {
        const VrnNamelistComponent& component = object.names->components[i];
        if (!PushName(writer, component.name, component.nameLength, true)) continue;
        NamelistObject part;
        ComponentObject(object, object.base, static_cast<uint32_t>(i), false, &part);
        WriteObject(writer, part);
        writer->designatorLength = mark;
    }
}

int32_t EndIOWriteNl(LocalContext* context) { return IOTerminateRecord(context); }

void SetDelimiter(LocalContext* context) {
    switch (context->modeDelim) {
    case VRN_KEY_QUOTE:
        context->ld_delimited = 1;
        context->ld_delim_char = '"';
        break;
    case VRN_KEY_NONE:
        context->ld_delimited = 0;
        break;
    default:
        // DELIM= not given: apostrophes, so that what is written can be read back.
        context->ld_delimited = 1;
        context->ld_delim_char = '\'';
        break;
    }
}

}  // namespace

int32_t BeginIOWriteNl(LocalContext* context, void* groupArgument) {
    const auto* group = static_cast<const VrnNamelistGroup*>(groupArgument);
    SetDelimiter(context);
    context->ld_in_namelist = 1;
    context->ldSeparator = context->modeDecimal == VRN_KEY_COMMA ? ';' : ',';
    if (!context->dtioChild) context->endRoutine = EndIOWriteNl;
    const OptionBlock& options = context->global->options;
    if (options.optNlWidth > 0 && static_cast<int32_t>(options.optNlWidth) < context->recordMax) {
        context->recordMax = static_cast<int32_t>(options.optNlWidth);
    }
    bool old = options.optNamelist == VRN_KEY_OLD;
    if (group == nullptr) return context->status;

    // The group's name opens a record of its own.
    if (context->column != 0 && !LdNewRecord(context, false)) return context->status;
    char opener[kMaxDesignator + 2];
    int32_t length = 0;
    if (old) opener[length++] = ' ';
    opener[length++] = '&';
    uint32_t nameLength = group->nameLength < kMaxDesignator ? group->nameLength : kMaxDesignator;
    for (uint32_t i = 0; i < nameLength; ++i) {
        char byte = group->name[i];
        opener[length++] = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 32) : byte;
    }
    if (!PutWhole(context, opener, length)) return context->status;

    Writer writer{context, (context->options & VRN_OPTION_NAMELIST_OUTPUT_RULE) != 0};
    for (uint32_t i = 0; i < group->count && !context->itemsStopped; ++i) {
        const VrnNamelistMember& member = group->members[i];
        NamelistObject object;
        if (!MemberObject(member, false, &object)) continue;
        writer.designatorLength = 0;
        if (!PushName(&writer, member.name, member.nameLength, false)) continue;
        WriteObject(&writer, object);
    }
    if (context->itemsStopped) return context->status;
    const char* closer = old ? " &END" : " /";
    if (LdNewRecord(context, false)) Put(context, closer, static_cast<int32_t>(std::strlen(closer)));
    return context->status;
}
