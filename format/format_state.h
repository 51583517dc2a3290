// The state of format control for the statement in progress. It lives in LocalContext;
// the parenthesis stack it points at survives statements and grows when a deeper format
// needs it.
#pragma once

#include <cstdint>

#include "vrn90.h"

// One open group: repetitions still to do, and the first operation inside it.
struct FormatStackEntry {
    int32_t count;
    const void* start;
    uint32_t effectsMark;  // `effects` when the current pass over the group began
};

// An expression of a "<...>" operand: called with the statement's environment word.
using FormatExpressionFunction = VrnFormatExpressionFunction;

struct FormatState {
    const void* format;        // the header of the code, null when there is no format
    const void* current;       // op word of the operation under execution
    const void* next;          // the next op word
    int32_t top;               // index of the top entry; -1 when the stack is empty
    FormatStackEntry* stackBase;
    int32_t stackCapacity;     // entries allocated
    const void* reversion;
    intptr_t expressionEnv;
    const FormatExpressionFunction* expressionTable;
    uint32_t desc;             // data descriptor code for the item, after any G rule
    int32_t w, d, e;           // d is m for I, B, O and Z
    int32_t size;              // normalised size: 1, 2, 4, 8 or 16
    int32_t blankZero;
    int32_t signPlus;
    int32_t scale;
    int32_t dollar;
    int32_t repeat;
    int32_t generic;
    int32_t sawData;
    int32_t reverted;
    int32_t decimalComma;
    int32_t roundMode;
    int32_t processorRound;    // the caller's floating-point mode, read once a statement; -1 not yet
    const void* repeatAt;
    uint8_t expressionDone[3];
    int32_t expressionValue[3];
    int32_t trailingBlanks;
    int32_t scaleSaved;
    int32_t wSaved;
    uint32_t opWord;           // the data op the item came from: a segment repeats it unchanged
    uint32_t effects;          // counts the operations that transfer or move: data, literals, "/", positions
    uint8_t wide;              // the code is the 64-bit encoding
    uint8_t allConstant;       // the data op's operands are all plain constants
    uint8_t standardLevel;     // LANGLVL asks for the standard's type checks
};
