// Namelist input: the pieces the reader shares with the designator resolution.
#pragma once

#include "listio/namelist.h"

struct LocalContext;

// The object that the name the scanner has just read, and the subscripts, substrings
// and components that follow it, select; the scanner is left where the values begin.
// false, with the message given, for a name that is not in the group (92) or a selection
// that is not valid (45), and when the statement stops.
bool ResolveDesignator(LocalContext* context, const VrnNamelistGroup* group, NamelistObject* object);
