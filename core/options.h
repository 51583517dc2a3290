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

// The tokens of an option text.
enum TokenType {
    kTokenBad = -1,     // anything else, or a word or number run into a stray character
    kTokenEnd = 0,
    kTokenWord = 1,     // letters, digits and underscores, not all digits; upper-cased in place
    kTokenNumber = 2,   // digits, or "-" directly followed by digits
    kTokenColon = 3,
    kTokenEquals = 4,
    kTokenString = 5,   // between apostrophes; one that never closes is bad
    kTokenComma = 6,
    kTokenDash = 7,     // a "-" not followed by a digit
};

struct Token {
    int type;
    char* start;
    int length;
};

// Skips white space and reads one token; the result is the position behind it.
char* FindToken(char* text, Token* token);

// Parses a NUL-terminated option text, which it changes, into the block. The result is 0,
// or the number of the message that ends the program, with the option's name and the
// offending text for it; the block is then unchanged.
int32_t ParseRTEOptions(OptionBlock* options, char* text, char (&option)[64], char (&value)[256]);
// Reads an option text (not NUL-terminated) into the block. Every error ends the program.
void ProcessRTEOptions(GlobalContext* global, const char* text, int32_t length);
// The variables vrq_messages and cnverr, which override VRNRTEOPTS.
void SetOldOptions(GlobalContext* global);
// Adds a range of units, keeping the list ascending and free of overlap.
void AddUnitRange(UnitRange** list, uint32_t* count, uint32_t* capacity, UnitRange* range);
// Stores omp_get_thread_num for message prefixes; 0 (and message 232) without one.
int32_t ResolveThreadNumFunc();

// _vrnGetRTEOpts for the re-entrant layers (MATMUL, random numbers), whose threads may ask
// at the same moment: the first asks start the run-time once between them.
int32_t GetRTEOptsFromAnyThread(int32_t key);
