// Namelist I/O: the objects of a group as the reader and the writer walk them.
//
// A namelist object is whatever a name in the group, or a designator built on it in
// input (A(2:8:2), T%X, C(3)(1:2)), stands for: elements of one type laid out by a base
// address and up to 20 strided dimensions, walked in array element order.
#pragma once

#include <cstdint>

#include "vrn90.h"

struct LocalContext;

constexpr int kNamelistMaxRank = 20;

struct NamelistObject {
    char* base = nullptr;
    uint32_t type = 0;    // item type code 0-6
    int32_t kind = 0;     // the kind, the part kind of a complex
    int32_t length = 0;   // bytes of a character element
    const VrnDTTable* table = nullptr;         // type 6
    const VrnDTIORow* dtio = nullptr;          // type 6, the direction's DTIO table or null
    const VrnNamelistType* names = nullptr;    // type 6, the names of its components or null
    int32_t rank = 0;
    int64_t lower[kNamelistMaxRank] = {};      // Fortran dimension order: [0] is dimension 1
    int64_t extent[kNamelistMaxRank] = {};
    int64_t stride[kNamelistMaxRank] = {};     // bytes
    bool whole = true;  // the object as the group has it, not a section or part of it

    int64_t Count() const {
        int64_t count = 1;
        for (int32_t d = 0; d < rank; ++d) count *= extent[d] > 0 ? extent[d] : 0;
        return count;
    }
    // The bytes of one element.
    int32_t ElementSize() const;
};

// The object a member of the group names; false when it is an allocatable that is not
// allocated or a pointer that is not associated.
bool MemberObject(const VrnNamelistMember& member, bool reading, NamelistObject* object);

// The object a component of a derived-type element stands for, at `element`.
// `component` indexes the rows of `parent.table`.
void ComponentObject(const NamelistObject& parent, char* element, uint32_t component, bool reading,
                     NamelistObject* object);

// Calls `visit(context, element address)` for each element in array element order, with
// arrayActive and arrayIndex telling the scanner and messages where the walk stands. It
// stops when `visit` returns non-zero or the statement stops, and when the scanner asks
// for it (array_abandon); the result is then non-zero.
using NamelistVisit = int32_t (*)(LocalContext* context, char* element, const NamelistObject& object);
int32_t ForEachElement(LocalContext* context, const NamelistObject& object, NamelistVisit visit);

// Names compare without regard to case; a name of the group has no blanks around it.
bool SameName(const char* text, int32_t length, const char* name, uint32_t nameLength);

// Begin and end routines of the namelist statements; the kind argument is the group.
int32_t BeginIOWriteNl(LocalContext* context, void* group);
int32_t BeginIOReadNl(LocalContext* context, void* group);
