/*
 * libvrn90_t: the run-time library of the VR Fortran compiler.
 *
 * This header declares what compiled code calls and the binary records it builds.
 * On the 32-bit target every record below has its fixed layout of 32-bit words; on a
 * 64-bit host the words that hold an address widen to 64 bits and nothing else does.
 */
#ifndef VRN90_H
#define VRN90_H

#include <stddef.h>
#include <stdint.h>

#include "ISO_Fortran_binding.h"
#include "vrn90_keywords.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Statement flags: the second argument of _vrnBeginIO ---------------------- */

#define VRN_KIND_UNFORMATTED   0u
#define VRN_KIND_LIST_DIRECTED 1u
#define VRN_KIND_NAMELIST      2u
#define VRN_KIND_FORMATTED     3u

#define VRN_DIRECTION_READ  0u
#define VRN_DIRECTION_WRITE 1u

#define VRN_ACCESS_SEQUENTIAL 0u
#define VRN_ACCESS_DIRECT     1u /* REC= */
#define VRN_ACCESS_STREAM     4u /* POS= */

#define VRN_FLAG_INTERNAL     0x00800000u
#define VRN_FLAG_ASYNCHRONOUS 0x01000000u

/* Packs a statement description: kind in bits 0-7, direction in 8-15, access in 16-22. */
#define VRN_STATEMENT_FLAGS(kind, direction, access) \
    ((uint32_t)(kind) | ((uint32_t)(direction) << 8) | ((uint32_t)(access) << 16))

/* ---- Statement options: the fourth argument of _vrnBeginIO and _vrnIOCmd -------- */

#define VRN_OPTION_OPEN_APPEND_OLD      0x00000001u /* OPEN: default POSITION of an OLD file is APPEND */
#define VRN_OPTION_OPEN_APPEND_UNKNOWN  0x00000002u /* OPEN: the same for an UNKNOWN file */
#define VRN_OPTION_INQUIRE_BY_UNIT      0x00000001u
#define VRN_OPTION_LD_INTERCHANGE       0x00000008u /* T and F for integers, numbers for logicals */
#define VRN_OPTION_LD_OVERFLOW_MINUS2   0x00000010u /* IOSTAT= -2, not 2, for a record too long */
#define VRN_OPTION_BOZ_RULE             0x00000020u
#define VRN_OPTION_NO_LEADING_ZERO      0x00000040u
#define VRN_OPTION_FORMAT_CONTROL_RULE  0x00000080u
#define VRN_OPTION_NONADVANCING         0x00000100u /* ADVANCE="NO" */
#define VRN_OPTION_NAMELIST_OUTPUT_RULE 0x00000200u
#define VRN_OPTION_IO_AFTER_ENDFILE     0x00000400u
#define VRN_OPTION_NEGATIVE_ZERO_SIGN   0x00008000u
#define VRN_OPTION_ADVANCE_YES          0x00010000u /* ADVANCE="YES" was given */
#define VRN_OPTION_DTIO_INTEGER8        0x00040000u
#define VRN_OPTION_LOGICAL_OUTPUT       0x00080000u
#define VRN_OPTION_REAL_OUTPUT_RULE     0x00100000u
#define VRN_OPTION_PAD_RULE             0x10000000u /* OPEN: PAD="YES" by default; internal file: PAD="NO" */
#define VRN_OPTION_ERR                  0x20000000u /* ERR= is present */
#define VRN_OPTION_END                  0x40000000u /* END= is present */
#define VRN_OPTION_EOR                  0x80000000u /* EOR= is present */

/* ---- KeywordList: the tagged specifier list ------------------------------------ */

/*
 * One specifier. A character value is a = address, b = length, or a = 0 and b = the
 * keyword number of the value when the compiler knows it. An integer or an address is
 * in a. A 64-bit value has its high half in a and its low half in b.
 */
typedef struct KeywordEntry {
    uint32_t tag;
    uintptr_t a;
    uint32_t b;
} KeywordEntry;

typedef struct KeywordList {
    uint32_t version; /* must be 1 */
    uint32_t count;
    KeywordEntry entries[];
} KeywordList;

/* ---- Internal file description -------------------------------------------------- */

/*
 * For an internal file the unit word holds the address of this description. When
 * recordLength is 0 and lengthOrDescriptor is not, the file is a non-contiguous
 * character array and lengthOrDescriptor is the address of its RTD.
 */
typedef struct InternalFile {
    uintptr_t base;
    uintptr_t lengthOrDescriptor; /* total length in bytes, or the RTD address */
    uint32_t recordLength;
} InternalFile;

/* ---- File statements: the command numbers of _vrnIOCmd ------------------------- */

#define VRN_COMMAND_OPEN      0
#define VRN_COMMAND_CLOSE     1
#define VRN_COMMAND_INQUIRE   2
#define VRN_COMMAND_BACKSPACE 3
#define VRN_COMMAND_REWIND    4
#define VRN_COMMAND_ENDFILE   5
#define VRN_COMMAND_FLUSH     6
#define VRN_COMMAND_INVALID   7
#define VRN_COMMAND_WAIT      8

/* The unit number that asks OPEN for a NEWUNIT= number. */
#define VRN_NEWUNIT_MARKER ((int32_t)0x80000000)

/* ---- Entry points --------------------------------------------------------------- */

typedef struct LocalContext LocalContext;

/* A data transfer statement: _vrnBeginIO, one call per item, _vrnEndIO. */
LocalContext* _vrnBeginIO(void* unitAddress, uint32_t statementFlags, const KeywordList* keywords,
                          uint32_t options, void* iostatAddress, int32_t recordNumber,
                          void* kindArgument);
int32_t _vrnEndIO(LocalContext* context);

/* A file statement (OPEN, CLOSE, INQUIRE, BACKSPACE, REWIND, ENDFILE, FLUSH, WAIT).
 *
 * INQUIRE is command 2. By unit, `options` has VRN_OPTION_INQUIRE_BY_UNIT and the unit
 * comes in `unitNumber`; by file, the bit is clear and the list holds FILE=. Each result
 * specifier names its variable in the list:
 *   character (ACCESS, NAME, ...): a = address, b = length; blank-padded or cut;
 *   integer (NUMBER, RECL, NEXTREC, SIZE, POS): a = address of 4 bytes, or the tag
 *     VRN_TAG_INQUIRE_INT8 with a = address of 8 bytes and b = the specifier's keyword;
 *   logical (EXIST, OPENED, NAMED, PENDING): a = address, b = its size in bytes (1, 2,
 *     4 or 8; 0 is 4), or the tag VRN_TAG_INQUIRE_LOG8 with b = the keyword.
 * True is 1. A variable whose value the statement leaves undefined is not touched.
 *
 * INQUIRE(IOLENGTH=n) list is a data transfer that writes nothing:
 *   _vrnBeginIO(NULL, VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE,
 *               VRN_ACCESS_SEQUENTIAL), keywords, options, iostat, 0, NULL)
 * with IOLENGTH (58) in the list (a = address of n, 4 bytes), or VRN_TAG_INQUIRE_INT8
 * with b = 58 for 8 bytes; then the unformatted item calls of the list, as for a WRITE;
 * then _vrnEndIO, which stores in n the bytes the items take in a record, without
 * record tags: the RECL= of a direct-access file that holds them. Defined I/O
 * procedures are not called: an object counts as its components. */
int32_t _vrnIOCmd(int32_t unitNumber, int32_t command, const KeywordList* keywords,
                  uint32_t options, void* iostatAddress);

/* Text to keyword: the row's flag word or-ed with its number, or 0. */
uint32_t _vrnFindIOKeyword(const char* text, int32_t length);
uint32_t _vrnfindiokeyword(const char* text, int32_t length);

/* There are no tasks in this library: 7 for a non-null argument, 0 for null. */
int32_t _vrnRegisterTask(void* task);
int32_t _vrnDeregisterTask(void* task);

/* ---- List-directed output: one call per item after _vrnBeginIO ---- */

/* Kinds: integer 1, 2, 4 (any other is 8); logical 1, 2, 4, 8; real 4, 8 (any other is
 * 16, a pair of doubles); complex parts 4, 8, 16. The word after the value is ignored.
 * Each returns the statement's status so far. */
int32_t _vrnWriteLDInt(LocalContext* context, const void* value, int32_t ignored, const int32_t* kind);
int32_t _vrnWriteLDLog(LocalContext* context, const void* value, int32_t ignored, const int32_t* kind);
int32_t _vrnWriteLDByte(LocalContext* context, const void* value);
int32_t _vrnWriteLDReal(LocalContext* context, const void* value, int32_t ignored, const int32_t* kind);
/* The imaginary part lies at value + totalLength / 2. */
int32_t _vrnWriteLDCmplx(LocalContext* context, const void* value, const int32_t* totalLength, const int32_t* partKind);
int32_t _vrnWriteLDChar(LocalContext* context, const char* text, const int32_t* length);

/* ---- List-directed input: one call per item after _vrnBeginIO ----
 * Kinds as for output; a byte item is one byte whatever its kind word. A null value
 * leaves the item as it was; "/" leaves it and every later item so, and the statement
 * ends without error. A character item is blank-padded or cut to its length. */
int32_t _vrnReadLDInt(LocalContext* context, void* item, int32_t ignored, const int32_t* kind);
int32_t _vrnReadLDLog(LocalContext* context, void* item, int32_t ignored, const int32_t* kind);
int32_t _vrnReadLDByte(LocalContext* context, void* item, int32_t ignored, const int32_t* kind);
int32_t _vrnReadLDReal(LocalContext* context, void* item, int32_t ignored, const int32_t* kind);
/* The imaginary part goes to item + totalLength / 2. */
int32_t _vrnReadLDCmplx(LocalContext* context, void* item, const int32_t* totalLength, const int32_t* partKind);
int32_t _vrnReadLDChar(LocalContext* context, char* item, const int32_t* length);

/* ---- Unformatted statements: one call per item after _vrnBeginIO ----
 * The last argument of _vrnBeginIO is null, or the address of the record's payload length
 * as a 64-bit integer when the compiler knows it; the leading length tag is then written
 * once. The type word holds the item type in bits 0-15 and the flags below. A complex
 * item's parts lie at item and item + *length / 2; each part is *kind bytes. */
#define VRN_UFMT_VECTOR       0x04000000u /* a 16-byte vector of *kind-byte elements, *length bytes */
#define VRN_UFMT_ASYNCHRONOUS 0x20000000u /* the item may move asynchronously */
#define VRN_UFMT_COMPONENT    0x40000000u /* a derived-type component in its array form */
#define VRN_UFMT_RUN          0x80000000u /* a contiguous run of elements, *length bytes */
int32_t _vrnWriteUfmt(LocalContext* context, const void* item, const int32_t* length, const int32_t* kind,
                      uint32_t typeWord);
int32_t _vrnReadUfmt(LocalContext* context, void* item, const int32_t* length, const int32_t* kind,
                     uint32_t typeWord);

/* ---- Formatted statements ----------------------------------------------------
 * The last argument of _vrnBeginIO for a formatted READ or WRITE is the address of a
 * format block. A character format gives its text and length, to be encoded at run time;
 * a format the compiler encoded gives a text address of 0 and the code's address. */
typedef intptr_t (*VrnFormatExpressionFunction)(intptr_t environment);
typedef struct VrnFormatBlock {
    uintptr_t version; /* 1 */
    const char* text;
    uintptr_t lengthOrCode;
    intptr_t expressionEnvironment;                   /* passed to every expression function */
    const VrnFormatExpressionFunction* expressionTable; /* indexed by a "<...>" operand's word */
} VrnFormatBlock;

/* Item types: 0 integer, 1 logical, 2 character, 3 byte, 4 real, 5 complex, 6 derived.
 * The lengths are passed by address: for a complex item the element length is that of one
 * part and the second part lies at item + totalLength / 2. */
int32_t _vrnWriteFmt(LocalContext* context, const void* item, const int32_t* totalLength,
                     const int32_t* elementLength, int32_t type);
/* A contiguous run of like items, totalBytes long, element by element. */
int32_t _vrnWriteFmtSeg(LocalContext* context, const void* base, int32_t totalBytes, int32_t elementLength,
                        int32_t type, int32_t characterLength);
/* The input forms: the item receives the value the field gives. */
int32_t _vrnReadFmt(LocalContext* context, void* item, const int32_t* totalLength, const int32_t* elementLength,
                    int32_t type);
int32_t _vrnReadFmtSeg(LocalContext* context, void* base, int32_t totalBytes, int32_t elementLength, int32_t type,
                       int32_t characterLength);

/* ---- Format encoder: format text to EncodedFormat -------------------------------
 * The code is a run of 32-bit words in the target's byte order (or 64-bit slots in the
 * 64-bit encoding, each holding the value a word would hold). An operation is an op word
 * followed by its operands. The op word keeps the descriptor code in bits 31-16 and the
 * operand kinds in bits 15-0, four bits an operand, operand 1 in the lowest nibble. */

/* Code bits of the op word's high half. */
#define VRN_FMT_CONTROL 0x8000u /* a control operation */
#define VRN_FMT_GENERIC 0x4000u /* G: the descriptor follows the data item's type */
#define VRN_FMT_CODE_MASK 0x3FFFu

/* Descriptor codes, without the two bits above. */
#define VRN_FMT_UNKNOWN 0 /* no-op */
#define VRN_FMT_HEADER 1
#define VRN_FMT_LPAREN 2
#define VRN_FMT_RPAREN 3
#define VRN_FMT_REPEAT 4
#define VRN_FMT_END 5
#define VRN_FMT_CONT 6
#define VRN_FMT_SLASH 7
#define VRN_FMT_COLON 8
#define VRN_FMT_BN 9
#define VRN_FMT_BZ 10
#define VRN_FMT_P 11
#define VRN_FMT_S 12
#define VRN_FMT_SS 13
#define VRN_FMT_SP 14
#define VRN_FMT_T 15
#define VRN_FMT_TL 16
#define VRN_FMT_TR 17
#define VRN_FMT_X 18
#define VRN_FMT_DOLLAR 19
#define VRN_FMT_I 20
#define VRN_FMT_IM 21
#define VRN_FMT_B 22
#define VRN_FMT_BM 23
#define VRN_FMT_O 24
#define VRN_FMT_OM 25
#define VRN_FMT_Z 26
#define VRN_FMT_ZM 27
#define VRN_FMT_D 28
#define VRN_FMT_QWD 29
#define VRN_FMT_F 30
#define VRN_FMT_E 31
#define VRN_FMT_EE 32 /* E w.dEe */
#define VRN_FMT_ED 33 /* E w.dDe */
#define VRN_FMT_EQ 34 /* E w.dQe */
#define VRN_FMT_EN 35
#define VRN_FMT_ENE 36
#define VRN_FMT_ES 37
#define VRN_FMT_ESE 38
#define VRN_FMT_G 39
#define VRN_FMT_GE 40
#define VRN_FMT_GD 41
#define VRN_FMT_GQ 42
#define VRN_FMT_L 43
#define VRN_FMT_A 44
#define VRN_FMT_AW 45
#define VRN_FMT_Q 46 /* the character count */
#define VRN_FMT_APOSTROPHE 47
#define VRN_FMT_QUOTE 48
#define VRN_FMT_H 49
#define VRN_FMT_DT 50
#define VRN_FMT_DC 51
#define VRN_FMT_DP 52
#define VRN_FMT_RU 53
#define VRN_FMT_RD 54
#define VRN_FMT_RZ 55
#define VRN_FMT_RN 56
#define VRN_FMT_RC 57
#define VRN_FMT_RP 58
#define VRN_FMT_HEADER_PADDED 59

/* Operand kinds. */
#define VRN_FMT_ABSENT 0
#define VRN_FMT_CONSTANT 1
#define VRN_FMT_VARIABLE 2 /* the operand is the index of an expression record */
#define VRN_FMT_OMITTED 3  /* the operand is 0 and the run-time default applies */

/* The header: five units in front of the first operation. */
#define VRN_FMT_HEADER_OP 0       /* 0x80010000 */
#define VRN_FMT_HEADER_LENGTH 1   /* units of the whole code, header included */
#define VRN_FMT_HEADER_DEPTH 2    /* deepest parenthesis nesting */
#define VRN_FMT_HEADER_FLAGS 3
#define VRN_FMT_HEADER_FIRST_CONT 4
#define VRN_FMT_HAS_T 0x1u       /* a T or TL occurs */
#define VRN_FMT_CONTIGUOUS 0x2u  /* the code is one block */
#define VRN_FMT_ENCODING64 0x4u

/* Flags, the second argument of _vrnEncodeFormat. */
#define VRN_FMT_COMPILE_TIME 0x0001u
#define VRN_FMT_EXPRESSIONS 0x0002u /* "<...>" operands */
#define VRN_FMT_LEVEL_F77 0x0004u
#define VRN_FMT_LEVEL_PRE90 0x0008u
#define VRN_FMT_LEVEL_F90 0x0010u
#define VRN_FMT_NO_HOLLERITH 0x0020u
#define VRN_FMT_Q_COUNT 0x0040u
#define VRN_FMT_ESCAPES 0x0080u
#define VRN_FMT_MULTIBYTE 0x0100u
#define VRN_FMT_64BIT 0x0200u /* with VRN_FMT_COMPILE_TIME */
#define VRN_FMT_LEVEL_F95 0x0400u
#define VRN_FMT_LEVEL_F2003 0x0800u
#define VRN_FMT_INTEGER2 0x1000u
#define VRN_FMT_INTEGER8 0x2000u
#define VRN_FMT_LEVEL_F2008 0x4000u

/* One record for each "<...>" operand, in order of appearance. */
typedef struct VrnFormatExpression {
    int32_t textPosition;       /* offset of the first character behind "<" */
    int32_t textLength;         /* with "<" and ">" */
    int32_t byteOffset;         /* of the op word in the (packed) code; -1 when the item was dropped */
    int32_t operandIndex;       /* 0 w or a repeat, 1 d or m, 2 e; 3 + n the DT v-list entry n */
    int32_t descriptorNumber;
    int32_t descriptorPosition;
} VrnFormatExpression;

/* Called for every diagnostic: callback(code, descriptorNumber, position, virtualCode, a, b,
 * c, 0). It returns 1 to go on with a repair, 0 to stop, any other value to stop and have
 * the encoder return it. */
typedef intptr_t (*VrnFormatCallback)(intptr_t code, intptr_t descriptorNumber, intptr_t position,
                                      intptr_t virtualCode, intptr_t a, intptr_t b, intptr_t c,
                                      intptr_t reserved);

typedef struct VrnFormatText {
    const char* text;
    int32_t length;
} VrnFormatText;

/* 1 and the results stored on success; otherwise 0 or the callback's stopping value. A
 * compile-time call returns a code that the caller owns when it had to be packed, and
 * otherwise one in the library's buffer, valid until the next compile-time call. */
intptr_t _vrnEncodeFormat(const VrnFormatText* format, uint32_t flags, VrnFormatCallback callback,
                          int32_t* expressionCount, VrnFormatExpression** expressionTable,
                          void** encoded, int32_t* encodedBytes);
intptr_t _vrnencodeformat(const char* text, int32_t length, uint32_t flags, VrnFormatCallback callback,
                          int32_t* expressionCount, VrnFormatExpression** expressionTable,
                          void** encoded, int32_t* encodedBytes);
intptr_t _vrnencodeformat_fe(uint32_t flags, VrnFormatCallback callback, int32_t* expressionCount,
                             VrnFormatExpression** expressionTable, void** encoded, int32_t* encodedBytes,
                             const char* text, int32_t length);
/* Replaces the variable operand of a record by a folded constant: 1 when done. */
intptr_t _vrnSetFormatConstant(void* encoded, VrnFormatCallback callback, const VrnFormatExpression* record,
                               intptr_t value);
intptr_t _vrnsetformatconstant(void* encoded, VrnFormatCallback callback, const VrnFormatExpression* record,
                               int32_t valueHigh, uint32_t valueLow);
/* 1 for the 32-bit encoding, 2 for the 64-bit one, else 0. */
int32_t _vrnEncodingMode(const void* encoded);
int32_t _vrnencodingmode(const void* encoded);
/* Frees the compile-time code buffer and expression table. */
void _vrnFreeFormatMemory(void);
void _vrnfreeformatmemory(void);

/* ---- Run-time descriptors ---------------------------------------------------------
 * The RTD tells the library where a data object lies, its type and shape. Words are
 * 32-bit in the target's byte order; on a 64-bit host the address words are 64-bit and
 * header.version has bit 7 set. There is no padding anywhere in the record, so fields
 * behind the dimension table may not be aligned on a host: read them with memcpy. */

#define RTD_SCALAR      1
#define RTD_SCALAR_CHAR 2
#define RTD_ARRAY       3

#define RTD_TYPE_DERIVED   1
#define RTD_TYPE_CHARACTER 2
#define RTD_TYPE_INTEGER   13
#define RTD_TYPE_REAL      14
#define RTD_TYPE_COMPLEX   15
#define RTD_TYPE_LOGICAL   16
#define RTD_TYPE_BYTE      18

#define RTD_FLAG_IS_ALLOCATED     0x80
#define RTD_FLAG_IS_ASSOCIATED    0x40
#define RTD_FLAG_OK_TO_DEALLOCATE 0x20
#define RTD_FLAG_IS_CONTIGUOUS    0x10
#define RTD_FLAG_LAST_IO_CALL     0x08
#define RTD_FLAG_IS_PADDED        0x04
#define RTD_FLAG_IS_AUTODBL       0x02

#define RTD_VERSION_64BIT 0x80
#define RTD_MAX_RANK 20

#define RTD_HAS_VFT_TPT_TPV 0x80000000u
#define RTD_HAS_UNKNOWN_TPT 0x40000000u
#define RTD_HAS_LEN_PARM    0x20000000u
#define RTD_PASS_DSCR_ARG   0x10000000u

typedef struct RTDHeader {
    uint8_t dscr_type;
    uint8_t data_type;
    uint8_t flags;
    uint8_t version;
} RTDHeader;

/* The common head. element_len exists in an array, in version 2 and above, and for
 * character data; a scalar of version 0 or 1 of another type ends before it. */
typedef struct RTD {
    uintptr_t base_ptr;
    RTDHeader header;
    int32_t element_len;
} RTD;

typedef struct RTDDimension {
    int32_t low_bound;
    int32_t extent;
    int32_t multiplier; /* bytes between elements along the dimension */
} RTDDimension;

/* An array: the dimension table is held in reverse, its last entry is dimension 1. */
typedef struct RTDArray {
    uintptr_t base_ptr;
    RTDHeader header;
    int32_t element_len;
    int32_t rank;
    int32_t rel_virtual_org;
    RTDDimension dims[];
} RTDArray;

/* Behind the dimension table of an array, behind element_len of a scalar, version 2 on. */
typedef struct RTDV2Fields {
    uint32_t flagsA;
    uint32_t reserved;
    uintptr_t reserved_ptr;
    uintptr_t chain_ptr;
    uintptr_t vft_ptr; /* these three only with RTD_HAS_VFT_TPT_TPV */
    uintptr_t tpt_ptr;
    uintptr_t tpv_ptr;
} RTDV2Fields;

typedef struct RTDVft {
    uintptr_t base_ptr;
    uintptr_t typeinfo;
} RTDVft;

typedef struct RTDTypeParams {
    int64_t count;
    int64_t typeparams[];
} RTDTypeParams;

typedef struct RTDTypeinfo {
    uintptr_t name;
    uintptr_t mangled_name;
    uintptr_t parent;
    uintptr_t dt_descriptor;
    uintptr_t dt_param_descriptor;
    uintptr_t template_typeinfo;
    uint32_t flags; /* bit 0 has_parent, bit 1 has_final, bit 2 contains_final */
    int32_t final_proc_index;
    int32_t copy_proc_index;
    int32_t init_proc_index;
    int32_t expr_update_proc_index;
} RTDTypeinfo;

/* Accessors: one field each; a descriptor that lacks the field fails an assertion. */
int32_t __vrnrtdgetversion(const void* rtd);
int32_t __vrnrtdgetflags(const void* rtd);
int32_t __vrnrtdgetdscr_type(const void* rtd);
int32_t __vrnrtdgetdata_type(const void* rtd);
int32_t __vrnrtdgetelement_len(const void* rtd);
uint32_t __vrnrtdgetflagsa(const void* rtd);
uint32_t __vrnrtdgetreserved(const void* rtd);
uintptr_t __vrnrtdgetreserved_ptr(const void* rtd);
uintptr_t __vrnrtdgetchain_ptr(const void* rtd);
uintptr_t __vrnrtdgetvft_ptr(const void* rtd);
uintptr_t __vrnrtdgettpt_ptr(const void* rtd);
uintptr_t __vrnrtdgettpv_ptr(const void* rtd);
int32_t __vrnrtdgetrank(const void* rtd);
int32_t __vrnrtdgetrvo(const void* rtd);
/* dim counts the entries of the table from 1: dim = rank is Fortran dimension 1. */
int32_t __vrnrtdgetlow_bound(const void* rtd, int32_t dim);
int32_t __vrnrtdgetextent(const void* rtd, int32_t dim);
int32_t __vrnrtdgetmultiplier(const void* rtd, int32_t dim);

/* Writes a descriptor to standard error, labelled with an identifying number. */
void _vrndmprtd(const void* rtd, int32_t id);

/* ---- Whole arrays and derived types as items ------------------------------------
 * The array forms take the address of the first element, the address of the length word,
 * the address of the kind word, the type word and the element length (the length of a
 * character element). The type word holds the item type in bits 0-15 and one of: */
#define VRN_ARRAY_DESCRIBED 0x40000000u /* the length word is the address of the array's RTD */
#define VRN_ARRAY_RUN       0x80000000u /* one contiguous run; the length word is its bytes */
/* With neither bit the item is a single element. The length word is pointer-sized; the
 * kind word is an int32, except for a derived type, where it is the address of the type's
 * table (so the kind word's address is the address of the table's address).
 *
 * A derived type is described by its table, which the compiler builds: `count`, `size`
 * (bytes of one element), then a row for each component. All words are pointer-sized. */
typedef struct VrnDTRow {
    uintptr_t typeWord; /* as for the array forms */
    uintptr_t kind;     /* the kind, or for a derived-type component the address of its table */
    uintptr_t length;   /* bytes (character length, or a run's), or the RTD address */
    uintptr_t reserved[2];
    uintptr_t offset;   /* of the component from the start of the object */
} VrnDTRow;
typedef struct VrnDTTable {
    uintptr_t count;
    uintptr_t size;
    VrnDTRow rows[];
} VrnDTTable;

/* A type with defined I/O procedures somewhere inside it has a second table beside the
 * first, of the same rows: one for the type itself, then one for each component. A
 * procedure of 0 means that the type or component has none for this direction; a derived
 * component without one is walked through `nested`, the table of its own type. */
typedef struct VrnDTIORow {
    uintptr_t procedure; /* a VrnDefinedIO, or 0 */
    uintptr_t rtd;       /* the RTD of the dtv argument; its base_ptr is set to the item */
    uintptr_t nested;    /* a derived-type component: the DTIO table of its type, or 0 */
    uintptr_t reserved;
    uintptr_t value;     /* handed to the procedure as its eighth argument */
    uintptr_t reserved2;
} VrnDTIORow;

/* A defined I/O procedure as the library calls it. `unit` and `iostat` point to 32-bit
 * integers, or to 64-bit ones when the statement's options have bit 18. The unit is -2 for
 * an internal file. The v-list is `vlistCount` default integers at `vlist` (0 and 0 in
 * list-directed statements); `iotype` is "LISTDIRECTED", "NAMELIST" or "DT" and the text
 * of the DT edit descriptor. The procedure runs its child statements on the same unit
 * with _vrnBeginIO as usual. */
typedef void (*VrnDefinedIO)(const RTD* dtv, const void* unit, const char* iotype, uintptr_t vlist,
                             uintptr_t vlistCount, void* iostat, char* iomsg, uintptr_t value,
                             int32_t iotypeLength, int32_t iomsgLength);

int32_t _vrnWriteLDArray(LocalContext* context, const void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength);
int32_t _vrnWriteLDArray_DTIO(LocalContext* context, const void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength, const VrnDTIORow* const* dtio);
int32_t _vrnReadLDArray(LocalContext* context, void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength);
int32_t _vrnReadLDArray_DTIO(LocalContext* context, void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength, const VrnDTIORow* const* dtio);
int32_t _vrnWriteFmtArray(LocalContext* context, const void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength);
int32_t _vrnWriteFmtArray_DTIO(LocalContext* context, const void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength, const VrnDTIORow* const* dtio);
int32_t _vrnReadFmtArray(LocalContext* context, void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength);
int32_t _vrnReadFmtArray_DTIO(LocalContext* context, void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength, const VrnDTIORow* const* dtio);
int32_t _vrnWriteUfmtArray(LocalContext* context, const void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength);
int32_t _vrnWriteUfmtArray_DTIO(LocalContext* context, const void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength, const VrnDTIORow* const* dtio);
int32_t _vrnReadUfmtArray(LocalContext* context, void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength);
int32_t _vrnReadUfmtArray_DTIO(LocalContext* context, void* first, const uintptr_t* lengthWord, const void* kindWord,
    uint32_t typeWord, int32_t elementLength, const VrnDTIORow* const* dtio);

/* One object of a derived type: its address, a word that is not read, and the address of
 * the address of its table (and of its DTIO table). */
int32_t _vrnWriteLDDT(LocalContext* context, const void* object, uintptr_t ignored, const VrnDTTable* const* table);
int32_t _vrnWriteLDDT_DTIO(LocalContext* context, const void* object, uintptr_t ignored, const VrnDTTable* const* table,
    const VrnDTIORow* const* dtio);
int32_t _vrnReadLDDT(LocalContext* context, void* object, uintptr_t ignored, const VrnDTTable* const* table);
int32_t _vrnReadLDDT_DTIO(LocalContext* context, void* object, uintptr_t ignored, const VrnDTTable* const* table,
    const VrnDTIORow* const* dtio);
int32_t _vrnWriteFmtDT(LocalContext* context, const void* object, uintptr_t ignored, const VrnDTTable* const* table);
int32_t _vrnWriteFmtDT_DTIO(LocalContext* context, const void* object, uintptr_t ignored, const VrnDTTable* const* table,
    const VrnDTIORow* const* dtio);
int32_t _vrnReadFmtDT(LocalContext* context, void* object, uintptr_t ignored, const VrnDTTable* const* table);
int32_t _vrnReadFmtDT_DTIO(LocalContext* context, void* object, uintptr_t ignored, const VrnDTTable* const* table,
    const VrnDTIORow* const* dtio);
int32_t _vrnWriteUfmtDT(LocalContext* context, const void* object, uintptr_t ignored, const VrnDTTable* const* table);
int32_t _vrnWriteUfmtDT_DTIO(LocalContext* context, const void* object, uintptr_t ignored, const VrnDTTable* const* table,
    const VrnDTIORow* const* dtio);
int32_t _vrnReadUfmtDT(LocalContext* context, void* object, uintptr_t ignored, const VrnDTTable* const* table);
int32_t _vrnReadUfmtDT_DTIO(LocalContext* context, void* object, uintptr_t ignored, const VrnDTTable* const* table,
    const VrnDTIORow* const* dtio);

/* ---- Namelist groups ----------------------------------------------------------------
 * A namelist READ or WRITE is a statement of kind VRN_KIND_NAMELIST whose kindArgument
 * is the address of its group. It has no item calls: _vrnBeginIO reads or writes the
 * whole group, _vrnEndIO ends it. Names are compared without regard to case and written
 * in upper case.
 *
 * A member is a scalar at `address`, or, when `rtd` is not 0, the object its RTD
 * describes: an array, or an allocatable or pointer (not allocated or not associated when
 * the RTD's base_ptr is 0: such a member is left out of output and cannot be named in
 * input). `kind` is the kind of an integer, logical or real, the kind of a part of a
 * complex, 1 for a byte; `length` the length of a character scalar or element (0 takes
 * the RTD's element_len). A derived-type member (type 6) has `derived`. */
typedef struct VrnNamelistType VrnNamelistType;

/* A component of a derived type, beside the row of the same index in its table. `shape`
 * gives the bounds of an array component held in one run (VRN_ARRAY_RUN): an RTD whose
 * base_ptr is not read; 0 means one dimension from 1. `type` describes the components
 * of a derived-type component, 0 when they are not to be named. */
typedef struct VrnNamelistComponent {
    const char* name;
    const VrnNamelistType* type;
    const void* shape;
    uint32_t nameLength;
} VrnNamelistComponent;

/* A derived type: its table, its DTIO tables for input and for output (0 when nothing in
 * the type has a defined procedure for that direction), and a name for each row. */
struct VrnNamelistType {
    const VrnDTTable* table;
    const VrnDTIORow* readDtio;
    const VrnDTIORow* writeDtio;
    const VrnNamelistComponent* components;
};

typedef struct VrnNamelistMember {
    const char* name;
    void* address;
    const void* rtd;
    const VrnNamelistType* derived;
    uint32_t nameLength;
    uint32_t type;  /* item type code 0-6 */
    int32_t kind;
    int32_t length;
} VrnNamelistMember;

typedef struct VrnNamelistGroup {
    const char* name;
    uint32_t nameLength;
    uint32_t count;
    VrnNamelistMember members[];
} VrnNamelistGroup;

/* ---- C descriptors ----------------------------------------------------------------
 * Around a call of a BIND(C) procedure compiled code converts between the RTD and the C
 * descriptor of ISO_Fortran_binding.h. Both return a CFI_ error code and, on an error,
 * leave their result as it was.
 *
 * __vrn_rtd_to_cfi describes the object of `rtd` in `result`, whose storage holds at least
 * the RTD's rank of dimensions (CFI_CDESC_T(CFI_MAX_RANK) for an assumed-rank dummy).
 * `attribute` is the dummy's: for CFI_attribute_allocatable the data is there when the
 * RTD has is_allocated, for CFI_attribute_pointer when it has is_associated or
 * is_allocated, and the lower bounds are the RTD's; for CFI_attribute_other the lower
 * bounds are zero. The type comes from data_type and element_len (a scalar RTD of
 * version 0 or 1 that is not character has no element_len: CFI_INVALID_ELEM_LEN).
 *
 * __vrn_cfi_to_rtd writes an array RTD (dscr_type 3, version 1, `source`'s rank, which may
 * be 0) describing the object of `source`: bounds, extents and strides in bytes, flags
 * is_allocated and ok_to_deallocate for an allocated allocatable, is_associated for an
 * associated pointer, is_contiguous where it is. A bound, extent, stride or origin beyond
 * 32 bits is CFI_INVALID_EXTENT. */
int __vrn_rtd_to_cfi(CFI_cdesc_t* result, const void* rtd, CFI_attribute_t attribute);
int __vrn_cfi_to_rtd(void* rtd, const CFI_cdesc_t* source);

/* Writes a C descriptor to standard error in the manner of _vrndmprtd. */
void _vrndmprtd_cfi(const CFI_cdesc_t* descriptor, int32_t id);
/* The same through list-directed WRITE on unit 6, with warnings; `header` is the address of
 * header.dscr_type of an array RTD, `data` that of its data. */
void _vrdmprtd(const void* header, const void* data);

/* ---- Array intrinsics ---------------------------------------------------------------
 * A result travels in a ResultRecord: the result's data address, then its RTD, with room
 * for the largest rank. With is_allocated clear the intrinsic builds the RTD and
 * allocates the data; with it set the caller's storage, shape and strides are used. */
typedef struct ResultRecord {
    uintptr_t base_ptr;
    /* The result's RTD, laid out as an RTDArray of up to RTD_MAX_RANK dimensions. */
    uintptr_t rtd_base_ptr;
    RTDHeader header;
    int32_t element_len;
    int32_t rank;
    int32_t rel_virtual_org;
    RTDDimension dims[RTD_MAX_RANK];
} ResultRecord;

/* Sizing: fill the result RTD as the intrinsic would and return its size in bytes. */
int32_t _vralsz(void* result, const void* source, int32_t dim, int32_t hasDim);
int32_t _vransz(void* result, const void* source, int32_t dim, int32_t hasDim);
int32_t _vrcnsz(void* result, const void* source, int32_t dim, int32_t hasDim);
int32_t _vrsmszg(void* result, const void* source, int32_t dim, const void* mask, int32_t hasDim);
int32_t _vrprszg(void* result, const void* source, int32_t dim, const void* mask, int32_t hasDim);
int32_t _vrmxszg(void* result, const void* source, int32_t dim, const void* mask, int32_t hasDim);
int32_t _vrmnszg(void* result, const void* source, int32_t dim, const void* mask, int32_t hasDim);
int32_t _vrhaszg(void* result, const void* source, int32_t dim, const void* mask, int32_t flag);
int32_t _vrhzszg(void* result, const void* source, int32_t dim, const void* mask, int32_t flag);
int32_t _vrlaszg(void* result, const void* source);
int32_t _vrlzszg(void* result, const void* source);
int32_t _vrcssz(void* result, const void* source);
int32_t _vressz(void* result, const void* source);
int32_t _vrspsz(void* result, const void* source, int32_t dim, int32_t ncopies);
int32_t _vrmrsz(void* result, const void* tsource, const void* fsource, const void* mask);
int32_t _vrupsz(void* result, const void* vector, const void* mask);
int32_t _vrpkszg(void* result, const void* array, const void* maskData, const void* vector, int32_t vectorPresent);
int32_t _vrtssz(void* result, const void* source);
int32_t _vrtfsz(void* result, const void* source, const void* mold, int32_t size, int32_t sizePresent);
int32_t _vrrssz(void* result, const void* source, const void* shape, uintptr_t ignored1, uintptr_t ignored2,
    const void* shapeData);
int32_t _vrmmsz(void* result, const void* a, const void* b);
/* The first word is not a descriptor: REPEAT returns length times NCOPIES. */
int32_t _vrrptsz(uintptr_t ignored, int32_t length, int32_t ncopies);

/* Array fill: every element that extents and strides (20 entries each, strides in
 * elements, a zero stride runs once) reach is set to *value. */
void _vriai1(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriai2(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriai4(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriai8(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriar4(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriar8(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriar16(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriax8(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriax16(void* base, const void* value, const int32_t* extents, const int32_t* strides);
void _vriax32(void* base, const void* value, const int32_t* extents, const int32_t* strides);
/* Character: the value is truncated or padded with blanks to the target length. */
void _vriac(void* base, const void* value, const int32_t* extents, const int32_t* strides, int32_t valueLength,
            int32_t targetLength);

/* The address of every element of an array, in array element order. */
void _vrgetelemaddr(const ResultRecord* record, uintptr_t* table);

/* Reductions. SUM, PRODUCT, MAXVAL, MINVAL: hasDim and hasMask tell by bit 0 whether DIM
 * and MASK are present. */
void _vrsmi1g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmi2g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmi4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmi8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmr4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmr8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmr16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmx8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmx16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrsmx32g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrpri1g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrpri2g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrpri4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrpri8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrprr4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrprr8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrprr16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrprx8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrprx16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrprx32g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxi1g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxi2g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxi4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxi8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxr4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxr8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxr16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmni1g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmni2g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmni4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmni8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnr4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnr8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnr16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxcg(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmncg(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
/* Location searches. The result holds subscripts counted from 1 whatever the source's lower
 * bounds, 0 where nothing was found, at the INTEGER kind compiled code preset in the result
 * RTD's element_len (1, 2, 4 or 8; 4 when it set none); its shape is the one _vrhaszg or,
 * without DIM, _vrlaszg gives. hasDim, hasMask tell by bit 0 whether DIM and MASK are
 * present, and back is BACK's value (bit 0); MASK is a logical array of any kind or a scalar.
 *   MAXLOC (ARRAY [, DIM] [, MASK])          _vrmxloc<t>g (result, ARRAY, DIM, MASK, ARRAY's RTD,
 *                                             MASK's RTD, hasDim, hasMask)
 *   MAXLOC (ARRAY [, DIM] [, MASK], BACK=b)  _vrmxlocwback<t>g (the same, b)
 *   MINLOC                                   _vrmnloc<t>g, _vrmnlocwback<t>g, likewise
 * for <t> of c i1 i2 i4 i8 r4 r8 r16. */
void _vrmxloccg(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxlocwbackcg(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmxloci1g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxlocwbacki1g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmxloci2g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxlocwbacki2g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmxloci4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxlocwbacki4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmxloci8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxlocwbacki8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmxlocr4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxlocwbackr4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmxlocr8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxlocwbackr8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmxlocr16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmxlocwbackr16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmnloccg(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnlocwbackcg(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmnloci1g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnlocwbacki1g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmnloci2g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnlocwbacki2g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmnloci4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnlocwbacki4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmnloci8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnlocwbacki8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmnlocr4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnlocwbackr4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmnlocr8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnlocwbackr8g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
void _vrmnlocr16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrmnlocwbackr16g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t back);
/* MAXLOC and MINLOC of any type they take, chosen by the source RTD's data type and length:
 * with DIM optional (h) and without DIM (l); a (MAXLOC) and z (MINLOC); no BACK. */
void _vrhai4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrhzi4g(ResultRecord* result, const void* source, int32_t dim, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask);
void _vrlai4g(ResultRecord* result, const void* source, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasMask);
void _vrlzi4g(ResultRecord* result, const void* source, const void* mask, const RTDArray* sourceRtd,
    const RTDArray* maskRtd, int32_t hasMask);
/* FINDLOC (ARRAY, VALUE [, DIM] [, MASK])   _vrfindloc<t>g (result, ARRAY, address of VALUE, DIM,
 *                                           MASK, ARRAY's RTD, MASK's RTD, hasDim, hasMask,
 *                                           valueLength)
 * FINDLOC (..., BACK=b)                     _vrfindlocwback<t>g (the same, b)
 * for <t> of c i1 i2 i4 i8 l1 l2 l4 l8 r4 r8 r16 x8 x16 x32. VALUE has the array's type and
 * kind, converted by compiled code where Fortran allows another, except a CHARACTER VALUE of
 * any length and a LOGICAL VALUE of any kind, whose length in bytes is valueLength (for a
 * LOGICAL, 0 means the array's kind); other types ignore valueLength. */
void _vrfindloccg(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackcg(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindloci1g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbacki1g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindloci2g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbacki2g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindloci4g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbacki4g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindloci8g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbacki8g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocl1g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackl1g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocl2g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackl2g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocl4g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackl4g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocl8g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackl8g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocr4g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackr4g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocr8g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackr8g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocr16g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackr16g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocx8g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackx8g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocx16g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackx16g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
void _vrfindlocx32g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength);
void _vrfindlocwbackx32g(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
    const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength, int32_t back);
/* Data movement, for <t> of c i1 i2 i4 i8 l1 l2 l4 l8 r4 r8 r16 x8 x16 x32 (a character
 * element has the length of its RTD). An array argument is its data and its RTD; an
 * argument that may be a scalar or an array (SHIFT, BOUNDARY, FIELD, MERGE's operands, a
 * PACK MASK) is the same, with a scalar RTD holding element_len (RTD_SCALAR_CHAR, or
 * RTD_SCALAR of version 2). Optional arguments have a presence flag (bit 0); MASKs are
 * logicals of any kind, SHIFT, ORDER and SHAPE integers of any kind. The result is built
 * as the sizing function of the family says when it is not allocated.
 *   CSHIFT (ARRAY, SHIFT [, DIM])                _vrcs<t> (result, ARRAY, SHIFT, DIM, ARRAY's RTD,
 *                                                SHIFT's RTD, hasDim)
 *   EOSHIFT (ARRAY, SHIFT [, BOUNDARY] [, DIM])  _vres<t>g (result, ARRAY, SHIFT, BOUNDARY, DIM,
 *                                                ARRAY's, SHIFT's and BOUNDARY's RTD, hasBoundary,
 *                                                hasDim); no BOUNDARY: zero, false or blanks
 *   TRANSPOSE (MATRIX)                           _vrts<t> (result, MATRIX, MATRIX's RTD)
 *   RESHAPE (SOURCE, SHAPE [, PAD] [, ORDER])    _vrrs<t>g (result, SOURCE, SHAPE, PAD, ORDER,
 *                                                their four RTDs, hasPad, hasOrder)
 *   SPREAD (SOURCE, DIM, NCOPIES)                _vrsp<t> (result, SOURCE, DIM, NCOPIES, SOURCE's RTD)
 *   PACK (ARRAY, MASK [, VECTOR])                _vrpk<t>g (result, ARRAY, MASK, VECTOR, their three
 *                                                RTDs, hasVector); without VECTOR the result's
 *                                                extent is set to the elements packed, in the
 *                                                room _vrpkszg gives (or the caller provided)
 *   UNPACK (VECTOR, MASK, FIELD)                 _vrup<t> (result, VECTOR, MASK, FIELD, their three
 *                                                RTDs); _vrups the same for any type, moving
 *                                                elements of VECTOR's length
 *   MERGE (TSOURCE, FSOURCE, MASK)               _vrmr<t> (result, TSOURCE, FSOURCE, MASK, their
 *                                                three RTDs)
 *   TRANSFER (SOURCE, MOLD [, SIZE])             _vrtfi1 (result, SOURCE, MOLD, SIZE, SOURCE's and
 *                                                MOLD's RTD, hasSize); bytes past the source's
 *                                                are zero */
void _vrcsc(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vrescg(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsc(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrscg(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspc(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkcg(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupc(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrc(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsi1(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresi1g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsi1(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsi1g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspi1(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpki1g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupi1(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmri1(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsi2(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresi2g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsi2(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsi2g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspi2(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpki2g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupi2(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmri2(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsi4(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresi4g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsi4(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsi4g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspi4(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpki4g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupi4(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmri4(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsi8(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresi8g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsi8(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsi8g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspi8(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpki8g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupi8(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmri8(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsl1(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresl1g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsl1(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsl1g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspl1(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkl1g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupl1(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrl1(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsl2(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresl2g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsl2(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsl2g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspl2(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkl2g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupl2(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrl2(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsl4(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresl4g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsl4(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsl4g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspl4(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkl4g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupl4(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrl4(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsl8(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresl8g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsl8(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsl8g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspl8(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkl8g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupl8(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrl8(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsr4(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresr4g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsr4(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsr4g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspr4(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkr4g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupr4(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrr4(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsr8(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresr8g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsr8(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsr8g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspr8(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkr8g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupr8(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrr8(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsr16(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresr16g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsr16(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsr16g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspr16(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkr16g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupr16(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrr16(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsx8(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresx8g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsx8(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsx8g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspx8(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkx8g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupx8(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrx8(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsx16(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresx16g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsx16(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsx16g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspx16(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkx16g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupx16(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrx16(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrcsx32(ResultRecord* result, const void* array, const void* shift, int32_t dim, const RTDArray* arrayRtd,
    const RTDArray* shiftRtd, int32_t hasDim);
void _vresx32g(ResultRecord* result, const void* array, const void* shift, const void* boundary, int32_t dim,
    const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, int32_t hasDim);
void _vrtsx32(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd);
void _vrrsx32g(ResultRecord* result, const void* source, const void* shape, const void* pad, const void* order,
    const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
    int32_t hasPad, int32_t hasOrder);
void _vrspx32(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd);
void _vrpkx32g(ResultRecord* result, const void* array, const void* mask, const void* vector,
    const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector);
void _vrupx32(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrmrx32(ResultRecord* result, const void* tsource, const void* fsource, const void* mask,
    const RTDArray* tsourceRtd, const RTDArray* fsourceRtd, const RTDArray* maskRtd);
void _vrups(ResultRecord* result, const void* vector, const void* mask, const void* field,
    const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd);
void _vrtfi1(ResultRecord* result, const void* source, const void* mold, int32_t size, const RTDArray* sourceRtd,
    const RTDArray* moldRtd, int32_t hasSize);
/* ALL, ANY (digit: LOGICAL kind) and COUNT (digit: INTEGER kind of the result). */
void _vrall1(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vrall2(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vrall4(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vrall8(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vranl1(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vranl2(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vranl4(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vranl8(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vrcni1(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vrcni2(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vrcni4(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);
void _vrcni8(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, int32_t hasDim);

/* ---- DOT_PRODUCT and MATMUL ----
 * A REAL(16) value is a pair of doubles, high word first; where long double has that
 * form it is the type of a REAL(16) function result. */
#if defined(__LDBL_MANT_DIG__) && __LDBL_MANT_DIG__ == 106
typedef long double vrn_real16;
typedef long double _Complex vrn_complex32;
#else
typedef struct vrn_real16 { double hi, lo; } vrn_real16;
typedef struct vrn_complex32 { vrn_real16 re, im; } vrn_complex32;
#endif

/* DOT_PRODUCT of two rank-1 arrays; the extent is a's. */
int8_t _vrdpi1(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
int16_t _vrdpi2(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
int32_t _vrdpi4(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
int64_t _vrdpi8(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
int8_t _vrdpl1(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
int16_t _vrdpl2(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
int32_t _vrdpl4(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
int64_t _vrdpl8(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
float _vrdpr4(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
double _vrdpr8(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
vrn_real16 _vrdpr16(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
float _Complex _vrdpx8(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
double _Complex _vrdpx16(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);
vrn_complex32 _vrdpx32(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd);

/* MATMUL into an allocated result. Bit 0 of hasCutoff makes cutoff meaningful: 1 asks
 * for the default Strassen cut-off, another positive value is the cut-off itself. */
void _vrmmi1(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmi2(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmi4(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmi8(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmml1(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmml2(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmml4(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmml8(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmr4(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmr8(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmr16(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmx8(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmx16(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
void _vrmmx32(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
    const RTDArray* bRtd, int32_t hasCutoff);
/* The conventional kernel: C(m x n) = A(m x k) B(k x n), strides in elements. code is
 * (typeA << 24) | (lenA << 16) | (typeB << 8) | lenB; a pair the kernel does not take
 * leaves C as it was. */
#define VRN_MATMUL_FLAT const void* a, int32_t aRow, int32_t aCol, const void* b, int32_t bRow, int32_t bCol, \
    void* c, int32_t cRow, int32_t cCol, int32_t m, int32_t k, int32_t n
void _vrmmi1c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmi2c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmi4c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmi8c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmml1c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmml2c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmml4c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmml8c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmr4c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmr8c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmr16c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmx8c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmx16c(VRN_MATMUL_FLAT, uint32_t code);
void _vrmmx32c(VRN_MATMUL_FLAT, uint32_t code);
/* Strassen-Winograd over operands of the result type, with scratch from work to workEnd. */
void _vrmmr4s(VRN_MATMUL_FLAT, int32_t cutoff, void* work, void* workEnd);
void _vrmmr8s(VRN_MATMUL_FLAT, int32_t cutoff, void* work, void* workEnd);
void _vrmmr16s(VRN_MATMUL_FLAT, int32_t cutoff, void* work, void* workEnd);
void _vrmmx8s(VRN_MATMUL_FLAT, int32_t cutoff, void* work, void* workEnd);
void _vrmmx16s(VRN_MATMUL_FLAT, int32_t cutoff, void* work, void* workEnd);
void _vrmmx32s(VRN_MATMUL_FLAT, int32_t cutoff, void* work, void* workEnd);
#undef VRN_MATMUL_FLAT

/* Hooks for argument errors: they do nothing, and stay so that a debugger can stop there. */
void _vrmerr1(const void* a);
void _vrmerr2(const void* a, const void* b);
void _vrmerr3(const void* a, const void* b, const void* c);
void _vrmerr4(const void* a, const void* b, const void* c, const void* d);

/* ---- Random numbers ---- */

/* The generator in use (1 or 2); an argument of 1 or 2 changes it, 0 only asks, anything
 * else is error 166. */
int32_t _vrrnopt(const int32_t* generator);
/* The current generator's seed and its count word. */
void _vrrnput(const double* seed, const int32_t* count);
int32_t _vrrnget(double* seed);
/* The same on the calling thread's own record, which the harvests use. */
int32_t _smp_vrrnopt(const int32_t* generator);
void _smp_vrrnput(const double* seed, const int32_t* count);
int32_t _smp_vrrnget(double* seed);
void _vrrnput_combined(const double* seed, const int32_t* count);
/* 1 or 2, from the run-time option RANDOM. */
int32_t get_default_generator(void);
/* RANDOM_NUMBER of a REAL(4), REAL(8) or REAL(16) scalar or array, given by its RTD. */
void _vrrrand(const void* harvest);
void _vrdrand(const void* harvest);
void _vrqrand(const void* harvest);

/* ---- Run-time options ---- */

/* The value of one option by its keyword number: 54 (YES) or 28 (NO) for the yes/no
 * options, the raw 1 or 0 for ERRLOC, ERRTRACE, ERRTHRDNUM and ERRIMAGENUM, the stored
 * keyword or number for the others, -1 for any other key. */
int32_t _vrnGetRTEOpts(int32_t key);
/* Changes options during the run, with the syntax of VRNRTEOPTS. */
void setrteopts(const char* text, int32_t length);
void setrteopts_(const char* text, int32_t length);

/* ---- Errors outside I/O statements ---- */

/* A character variable: address and length. */
typedef struct CharacterVariable {
    uintptr_t address;
    uint32_t length;
} CharacterVariable;

void _vrnRecoverableError(int32_t message);
void _vrnErrorExit(int32_t message) __attribute__((noreturn));
/* Reports a message for STAT=/ERRMSG= style callers; iomsg and fileName point to
 * CharacterVariables and may be null. */
void _vrnGetErrorMsg1(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat, int32_t* iostatAddress,
                      const void* iomsg, const char* text);
void _vrnGetErrorMsgWithLoc1(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat,
                             int32_t* iostatAddress, const void* iomsg, const void* fileName, int32_t line,
                             const char* text);
void _vrnErrorExitWithLoc(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat, int32_t* iostatAddress,
                          const void* iomsg, const void* fileName, int32_t line, const char* text)
    __attribute__((noreturn));

/* ---- Termination ---- */

/* A stop code: text and length; a null text with a non-zero length means an integer
 * code, whose value is the separate argument; both zero means no code. */
typedef struct StopCode {
    uintptr_t text;
    uint32_t length;
} StopCode;

/* STOP: prints "STOP code" on unit 0 when there is a code, and exits with the integer
 * code or 0. _vrnStopFPSCR also reports raised floating-point flags when bit 0 of *flags
 * is set. ERROR STOP exits with the integer code or 1. */
void _vrnStop(const StopCode* code, int32_t value, ...) __attribute__((noreturn));
void _vrnStopFPSCR(const StopCode* code, int32_t value, const int32_t* flags) __attribute__((noreturn));
void _vrnErrorStop(const StopCode* code, int32_t value, const int32_t* flags) __attribute__((noreturn));
/* PAUSE: 0 after reading a byte from a terminal, 14 when standard input is not one. */
int32_t _vrnPause(const StopCode* code, int32_t value);

/* ---- Service procedures ---- */

/* CALL FLUSH(unit); a null unit flushes every unit that was written. */
void flush_(const int32_t* unit);
/* CALL FIOSETUP(unit, command, value): command 1 flushes the unit after every write,
 * command 2 discards read-ahead before every read, while value is not 0. The result is
 * 0, 36 for a unit that is not connected, or 29 for an unknown command. */
int32_t fiosetup_(const int32_t* unit, const int32_t* command, const int32_t* value);

/* Normal end of the program: flushes and closes every unit, then exits with status. */
void _vrnExit(int32_t status) __attribute__((noreturn));
void exit_(const int32_t* status) __attribute__((noreturn));
/* Flushes and closes every unit, then aborts. */
void abort_(void) __attribute__((noreturn));
void _vrabort(void) __attribute__((noreturn));

/* ---- Diagnostics ---- */

/* The traceback of the caller's stack on standard error, one line a frame from the caller
 * outwards: number, address, function, and file and line where the object has line
 * tables. Safe in a signal handler. The ERRTRACE=YES option calls it after every reported
 * error. The forms with an underscore are the same, for Fortran compilers that add one. */
void vr__trbk(void);
void vr__trbk_(void);

/* Handlers for SIGFPE, SIGSEGV, SIGBUS and SIGILL, for each signal whose action is still
 * the default: on the signal they report it (for SIGFPE also the floating-point exception),
 * where it struck, the traceback, flush every unit and end the program with status 1.
 * The result is the number of signals given the run-time's handler. */
int32_t vr__trap_install(void);
int32_t vr__trap_install_(void);

/* The floating-point exceptions that trap, raising SIGFPE: the bits of `exceptions` below
 * are enabled, the others disabled. The result is the bits enabled before. */
#define VRN_FPE_INVALID 1
#define VRN_FPE_DIVIDE_BY_ZERO 2
#define VRN_FPE_OVERFLOW 4
#define VRN_FPE_UNDERFLOW 8
#define VRN_FPE_INEXACT 16
int32_t vr__fpe_trap(const int32_t* exceptions);
int32_t vr__fpe_trap_(const int32_t* exceptions);

#ifdef __cplusplus
}
#define VRN_STATIC_ASSERT static_assert
#else
#define VRN_STATIC_ASSERT _Static_assert
#endif

/* On the 32-bit target the records are exactly their words. */
#if UINTPTR_MAX == 0xFFFFFFFFu
VRN_STATIC_ASSERT(sizeof(KeywordEntry) == 12 && offsetof(KeywordEntry, b) == 8, "KeywordEntry is three words");
VRN_STATIC_ASSERT(sizeof(KeywordList) == 8 && offsetof(KeywordList, entries) == 8, "KeywordList header is two words");
VRN_STATIC_ASSERT(sizeof(InternalFile) == 12, "an internal file description is three words");
VRN_STATIC_ASSERT(sizeof(RTD) == 12 && offsetof(RTD, element_len) == 8, "the RTD head is three words");
VRN_STATIC_ASSERT(offsetof(RTDArray, dims) == 20 && sizeof(RTDDimension) == 12, "an array RTD's table is at word 5");
VRN_STATIC_ASSERT(sizeof(RTDV2Fields) == 28, "the V2 fields are seven words");
VRN_STATIC_ASSERT(sizeof(RTDTypeinfo) == 44, "a typeinfo is eleven words");
VRN_STATIC_ASSERT(offsetof(ResultRecord, rtd_base_ptr) == 4, "a result record is a base_ptr, then the RTD");
VRN_STATIC_ASSERT(sizeof(VrnFormatExpression) == 24, "an expression record is six words");
VRN_STATIC_ASSERT(sizeof(VrnFormatText) == 8, "a format text is an address and a length");
VRN_STATIC_ASSERT(sizeof(VrnFormatBlock) == 20, "a format block is five words");
VRN_STATIC_ASSERT(sizeof(VrnDTRow) == 24 && offsetof(VrnDTTable, rows) == 8, "a derived-type table row is six words");
VRN_STATIC_ASSERT(sizeof(VrnDTIORow) == 24, "a DTIO table row is six words");
VRN_STATIC_ASSERT(sizeof(VrnNamelistComponent) == 16 && offsetof(VrnNamelistComponent, nameLength) == 12,
                  "a namelist component is four words");
VRN_STATIC_ASSERT(sizeof(VrnNamelistType) == 16, "a namelist type is four words");
VRN_STATIC_ASSERT(sizeof(VrnNamelistMember) == 32 && offsetof(VrnNamelistMember, nameLength) == 16 &&
                      offsetof(VrnNamelistMember, length) == 28,
                  "a namelist member is eight words");
VRN_STATIC_ASSERT(sizeof(VrnNamelistGroup) == 12 && offsetof(VrnNamelistGroup, members) == 12,
                  "a namelist group is three words, then its members");
#endif

#endif
