// The run-time option block. Yes/no options hold 1 or 0; the others hold a keyword number
// unless stated. The block lives in GlobalContext and every layer reads it directly.
#pragma once

#include <cstdint>

struct UnitRange {
    int32_t low;
    int32_t high;
};

struct OptionBlock {
    uint32_t optCnvErr;
    uint32_t optNamelist;
    uint32_t optNlWidth;           // an integer, 0 for the record length rule
    uint32_t optMessages;
    uint32_t optErrRecovery;
    uint32_t optUnitVars;
    uint32_t optScratchVars;
    uint32_t optLangLvl;
    uint32_t optOptArgWarn;
    uint32_t optMultConn;
    uint32_t optWarnMultThrd;
    uint32_t optMultConnIo;
    uint32_t optErrorEof;
    uint32_t optRandom;
    uint32_t optCpuTimeType;
    uint32_t optBuffering;
    uint32_t optIntrinThds;        // an integer, 0 for automatic
    uint32_t optIostatEnd;
    uint32_t optInternalNlDelim;
    int32_t optBufferSize;         // -1, or at least 4,096
    uint32_t optErrLoc;
    uint32_t optErrTrace;
    UnitRange* ufmtUnits;          // units whose unformatted files are little-endian
    uint32_t ufmtUnitCount;
    uint32_t ufmtUnitCapacity;
    uint32_t optErrThrdNum;
    uint32_t optErrImageNum;
    uint32_t optNanInfOutput;
    uint32_t optAggressiveArrayIo;
};

struct GlobalContext;

void SetDefaultOptions(GlobalContext* global);
// Copies the block; the unit ranges are shared, not copied.
void CopyOptions(const GlobalContext* from, GlobalContext* to);
// The language levels under which class 3 checks speak.
bool StrictLanguageLevel(const OptionBlock& options);
