// All diagnostics go through ErrorHandler, which decides whether a specifier takes the
// error over, whether a message is printed and where, what IOSTAT= and IOMSG= receive,
// and whether the program ends. The code that detected the error only looks at the result.
#pragma once

#include <cstdint>

struct LocalContext;
struct UnitRecord;

// Classes: how bad the error is.
constexpr int32_t kClassSevere = 0;       // with no specifier the program ends
constexpr int32_t kClassRecoverable = 1;  // with no specifier ERR_RECOVERY decides
constexpr int32_t kClassConversion = 2;   // CNVERR decides
constexpr int32_t kClassLanguage = 3;     // silent unless LANGLVL is a standard level
constexpr int32_t kClassReported = 4;     // reported, then the statement goes on

// Kinds: stored in `status` when a specifier takes the error over.
constexpr int32_t kKindEndOfFile = 1;
constexpr int32_t kKindEndOfRecord = 2;
constexpr int32_t kKindError = 3;
constexpr int32_t kKindResources = 5;
constexpr int32_t kKindInterface = 6;

// Results.
constexpr int32_t kStatementStops = 1;  // a specifier took over, or IOSTAT= did
constexpr int32_t kRecover = 2;         // the caller goes on

// Tagged message arguments, ended by a 0 tag. The low 8 bits are the argument's number.
constexpr uint32_t ArgInt(uint32_t n) { return 0x40000000u + n; }      // int32_t, "$I"
constexpr uint32_t ArgInt64(uint32_t n) { return 0x10000000u + n; }    // two uint32_t, high first, "$L"
constexpr uint32_t ArgErrno(uint32_t n) { return 0x20000000u + n; }    // int, "$E"
constexpr uint32_t ArgText(uint32_t n) { return 0x80000000u + n; }     // const char*, "$C"

// One tagged argument as ErrorHandler has read it.
struct MessageArgument {
    uint32_t tag;
    int64_t number;     // $I, $L, $E
    const char* text;   // $C
};

// Copies a catalogue text into `out` (at most `capacity` bytes, no NUL added), putting in
// the argument of that number for "$C1", "$I2" and the like; a "$" with any other letter
// puts in nothing. The result is the length written.
int32_t SubstituteArguments(char* out, int32_t capacity, const char* text, const MessageArgument* arguments,
                            int count);

// The catalogue's text of a message when a catalogue is open already, else null: what a
// signal handler may ask, since opening one allocates.
const char* CatalogTextIfOpen(int message);

int32_t ErrorHandler(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat, ...);

// Poisons the unit and raises class 0 kind 3 with 10 to 13 by what the statement does.
int32_t IORaisePermanentError(LocalContext* context, UnitRecord* unit, int errnoValue);

void ErrorCloseCatalog();

// Stores a message line in the statement's IOMSG= variable, without its newline,
// blank-padded or cut to the variable's length.
void CopyToIomsg(LocalContext* context, const char* text, int32_t length);

// Where the catalogue is looked for when catopen's search does not find it.
extern const char* vrnFallbackCatalogPath;

// The thread number for message prefixes; null without a thread library.
extern int (*omp_get_thread_num_ptr)();
