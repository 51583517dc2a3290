/*
 * Keyword numbers of libvrn90_t.
 *
 * Compiled code holds these numbers in its KeywordLists and the library keeps every
 * connection property as one of them, so they never change. Each row gives the number,
 * an identifier, the upper-case name and the flag word (specifier, value, option and
 * the statements a specifier belongs to).
 */
#ifndef VRN90_KEYWORDS_H
#define VRN90_KEYWORDS_H

#define VRN_KEYWORD_SPECIFIER     0x80000000u /* a specifier name: UNIT, ACCESS */
#define VRN_KEYWORD_VALUE         0x40000000u /* a value of a specifier: APPEND, NEW */
#define VRN_KEYWORD_OPTION        0x20000000u /* a run-time option name: LANGLVL */
#define VRN_KEYWORD_OPTION_VALUE  0x10000000u /* a run-time option value: YES, 2003STD */
#define VRN_KEYWORD_IN_OPEN       0x08000000u
#define VRN_KEYWORD_IN_CLOSE      0x04000000u
#define VRN_KEYWORD_IN_INQUIRE    0x02000000u
#define VRN_KEYWORD_IN_POSITIONING 0x01000000u /* BACKSPACE, ENDFILE, REWIND */
#define VRN_KEYWORD_IN_TRANSFER   0x00800000u /* READ and WRITE */
#define VRN_KEYWORD_IN_KEYED_READ 0x00400000u
#define VRN_KEYWORD_IN_WAIT       0x00200000u
#define VRN_KEYWORD_IN_FLUSH      0x00100000u

/* X(number, identifier, name, flags) */
#define VRN_KEYWORD_TABLE(X) \
    X(  1, ACCESS              , "ACCESS",               0x8A000000u) \
    X(  2, ACTION              , "ACTION",               0x8A000000u) \
    X(  3, ADVANCE             , "ADVANCE",              0x80800000u) \
    X(  4, APOSTROPHE          , "APOSTROPHE",           0x40000000u) \
    X(  5, APPEND              , "APPEND",               0x40000000u) \
    X(  6, ASIS                , "ASIS",                 0x40000000u) \
    X(  7, BLANK               , "BLANK",                0x8A800000u) \
    X(  8, CNVERR              , "CNVERR",               0x20000000u) \
    X(  9, DELETE              , "DELETE",               0x40000000u) \
    X( 10, DELIM               , "DELIM",                0x8A800000u) \
    X( 11, DIRECT              , "DIRECT",               0xC2000000u) \
    X( 12, END                 , "END",                  0x80A00000u) \
    X( 13, EOR                 , "EOR",                  0x80A00000u) \
    X( 14, ERR                 , "ERR",                  0x8FB00000u) \
    X( 15, EXIST               , "EXIST",                0x82000000u) \
    X( 16, FILE                , "FILE",                 0x8A000000u) \
    X( 17, FMT                 , "FMT",                  0x80800000u) \
    X( 18, FORM                , "FORM",                 0x8A000000u) \
    X( 19, FORMATTED           , "FORMATTED",            0xC2000000u) \
    X( 20, IOSTAT              , "IOSTAT",               0x8FB00000u) \
    X( 21, KEEP                , "KEEP",                 0x40000000u) \
    X( 22, NAME                , "NAME",                 0x82000000u) \
    X( 23, NAMED               , "NAMED",                0x82000000u) \
    X( 24, NAMELIST            , "NAMELIST",             0x20000000u) \
    X( 25, NEW                 , "NEW",                  0x50000000u) \
    X( 26, NEXTREC             , "NEXTREC",              0x82000000u) \
    X( 27, NLWIDTH             , "NLWIDTH",              0x20000000u) \
    X( 28, NO                  , "NO",                   0x50000000u) \
    X( 29, NONE                , "NONE",                 0x40000000u) \
    X( 30, NML                 , "NML",                  0x80800000u) \
    X( 31, NULL                , "NULL",                 0x40000000u) \
    X( 32, NUM                 , "NUM",                  0x80800000u) \
    X( 33, NUMBER              , "NUMBER",               0x82000000u) \
    X( 34, OLD                 , "OLD",                  0x50000000u) \
    X( 35, OPENED              , "OPENED",               0x82000000u) \
    X( 36, PAD                 , "PAD",                  0x8A800000u) \
    X( 37, POSITION            , "POSITION",             0x8A000000u) \
    X( 38, QUOTE               , "QUOTE",                0x40000000u) \
    X( 39, READ                , "READ",                 0xC2000000u) \
    X( 40, READWRITE           , "READWRITE",            0xC2000000u) \
    X( 41, REC                 , "REC",                  0x80800000u) \
    X( 42, RECL                , "RECL",                 0x8A000000u) \
    X( 43, REPLACE             , "REPLACE",              0x40000000u) \
    X( 44, REWIND              , "REWIND",               0x40000000u) \
    X( 45, SCRATCH             , "SCRATCH",              0x40000000u) \
    X( 46, SEQUENTIAL          , "SEQUENTIAL",           0xC2000000u) \
    X( 47, SIZE                , "SIZE",                 0x82800000u) \
    X( 48, STATUS              , "STATUS",               0x8C000000u) \
    X( 49, UNFORMATTED         , "UNFORMATTED",          0xC2000000u) \
    X( 50, UNIT                , "UNIT",                 0x8FB00000u) \
    X( 51, UNKNOWN             , "UNKNOWN",              0x40000000u) \
    X( 52, WRITE               , "WRITE",                0xC2000000u) \
    X( 53, VRQ_MESSAGES        , "VRQ_MESSAGES",         0x20000000u) \
    X( 54, YES                 , "YES",                  0x50000000u) \
    X( 55, 90STD               , "90STD",                0x10000000u) \
    X( 56, 90EXT               , "90EXT",                0x10000000u) \
    X( 57, ZERO                , "ZERO",                 0x40000000u) \
    X( 58, IOLENGTH            , "IOLENGTH",             0x82000000u) \
    X( 59, LANGLVL             , "LANGLVL",              0x20000000u) \
    X( 60, ERR_RECOVERY        , "ERR_RECOVERY",         0x20000000u) \
    X( 61, UNDEFINED           , "UNDEFINED",            0x40000000u) \
    X( 62, SCRATCH_VARS        , "SCRATCH_VARS",         0x20000000u) \
    X( 63, UNIT_VARS           , "UNIT_VARS",            0x20000000u) \
    X( 64, OPTARG_WARN         , "OPTARG_WARN",          0x20000000u) \
    X( 65, MULTCONN            , "MULTCONN",             0x20000000u) \
    X( 66, CHAR                , "CHAR",                 0x40000000u) \
    X( 67, COND                , "COND",                 0x40000000u) \
    X( 68, DBCS                , "DBCS",                 0x40000000u) \
    X( 69, ID                  , "ID",                   0x82A00000u) \
    X( 70, KEY                 , "KEY",                  0x80400000u) \
    X( 71, KEYED               , "KEYED",                0x40000000u) \
    X( 72, KEYEND              , "KEYEND",               0x88000000u) \
    X( 73, KEYGE               , "KEYGE",                0x80400000u) \
    X( 74, KEYGT               , "KEYGT",                0x80400000u) \
    X( 75, KEYID               , "KEYID",                0x80400000u) \
    X( 76, KEYLENGTH           , "KEYLENGTH",            0x88000000u) \
    X( 77, KEYS                , "KEYS",                 0x88000000u) \
    X( 78, KEYSTART            , "KEYSTART",             0x88000000u) \
    X( 79, LASTKEY             , "LASTKEY",              0x82000000u) \
    X( 80, LASTRECL            , "LASTRECL",             0x82000000u) \
    X( 81, NODBCS              , "NODBCS",               0x40000000u) \
    X( 82, PASSWORD            , "PASSWORD",             0x88000000u) \
    X( 83, ERROREOF            , "ERROREOF",             0x20000000u) \
    X( 84, RANDOM              , "RANDOM",               0x20000000u) \
    X( 85, GENERATOR1          , "GENERATOR1",           0x10000000u) \
    X( 86, GENERATOR2          , "GENERATOR2",           0x10000000u) \
    X( 87, ASYNCH              , "ASYNCH",               0x8A800000u) \
    X( 88, DONE                , "DONE",                 0x80200000u) \
    X( 89, TRANSFER            , "TRANSFER",             0x40000000u) \
    X( 90, SYNCH               , "SYNCH",                0x40000000u) \
    X( 91, BOTH                , "BOTH",                 0x40000000u) \
    X( 92, UWIDTH              , "UWIDTH",               0x20000000u) \
    X( 93, MULTCONNIO          , "MULTCONNIO",           0x20000000u) \
    X( 94, TTY                 , "TTY",                  0x10000000u) \
    X( 95, CPU_TIME_TYPE       , "CPU_TIME_TYPE",        0x20000000u) \
    X( 96, USERTIME            , "USERTIME",             0x10000000u) \
    X( 97, SYSTIME             , "SYSTIME",              0x10000000u) \
    X( 98, ALLTIME             , "ALLTIME",              0x10000000u) \
    X( 99, TOTAL_USERTIME      , "TOTAL_USERTIME",       0x10000000u) \
    X(100, TOTAL_SYSTIME       , "TOTAL_SYSTIME",        0x10000000u) \
    X(101, TOTAL_ALLTIME       , "TOTAL_ALLTIME",        0x10000000u) \
    X(102, BUFFERING           , "BUFFERING",            0x20000000u) \
    X(103, ENABLE              , "ENABLE",               0x10000000u) \
    X(104, DISABLE_PRECONN     , "DISABLE_PRECONN",      0x10000000u) \
    X(105, DISABLE_ALL         , "DISABLE_ALL",          0x10000000u) \
    X(106, 95STD               , "95STD",                0x10000000u) \
    X(107, EXTENDED            , "EXTENDED",             0x10000000u) \
    X(108, NULLDEV             , "NULLDEV",              0x10000000u) \
    X(109, COMBINED            , "COMBINED",             0x10000000u) \
    X(110, WARN_MULT_THRD      , "WARN_MULT_THRD",       0x20000000u) \
    X(111, INTRINTHDS          , "INTRINTHDS",           0x20000000u) \
    X(112, STREAM              , "STREAM",               0xC2000000u) \
    X(113, POS                 , "POS",                  0x82800000u) \
    X(114, DEFAULT_RECL        , "DEFAULT_RECL",         0x20000000u) \
    X(115, IOSTAT_END          , "IOSTAT_END",           0x20000000u) \
    X(116, 2003STD             , "2003STD",              0x10000000u) \
    X(117, IOMSG               , "IOMSG",                0x8FB00000u) \
    X(118, MSGLINE             , "MSGLINE",              0x8FB00000u) \
    X(119, MSGCOL              , "MSGCOL",               0x8FB00000u) \
    X(120, MSGFILE             , "MSGFILE",              0x8FB00000u) \
    X(121, INTERNAL_NLDELIM    , "INTERNAL_NLDELIM",     0x20000000u) \
    X(122, SIGN                , "SIGN",                 0x8A800000u) \
    X(123, PLUS                , "PLUS",                 0x40000000u) \
    X(124, SUPPRESS            , "SUPPRESS",             0x40000000u) \
    X(125, PROCESSOR_DEFINED   , "PROCESSOR_DEFINED",    0x40000000u) \
    X(126, DECIMAL             , "DECIMAL",              0x8A800000u) \
    X(127, COMMA               , "COMMA",                0x40000000u) \
    X(128, POINT               , "POINT",                0x40000000u) \
    X(129, ERRLOC              , "ERRLOC",               0x20000000u) \
    X(130, ASYNCHRONOUS        , "ASYNCHRONOUS",         0x8A800000u) \
    X(131, PENDING             , "PENDING",              0x82000000u) \
    X(132, ROUND               , "ROUND",                0x8A800000u) \
    X(133, UP                  , "UP",                   0x40000000u) \
    X(134, DOWN                , "DOWN",                 0x40000000u) \
    X(135, NEAREST             , "NEAREST",              0x40000000u) \
    X(136, COMPATIBLE          , "COMPATIBLE",           0x40000000u) \
    X(137, UFMT_LITTLEENDIAN   , "UFMT_LITTLEENDIAN",    0x20000000u) \
    X(138, ERRTHRDNUM          , "ERRTHRDNUM",           0x20000000u) \
    X(139, NANINFOUTPUT        , "NANINFOUTPUT",         0x20000000u) \
    X(140, DEFAULT             , "DEFAULT",              0x50000000u) \
    X(141, AGGRESSIVE_ARRAY_IO , "AGGRESSIVE_ARRAY_IO",  0x20000000u) \
    X(142, BUFFER_SIZE         , "BUFFER_SIZE",          0x20000000u) \
    X(143, ENCODING            , "ENCODING",             0x8A800000u) \
    X(144, UTF_8               , "UTF-8",                0x40000000u) \
    X(145, NEWUNIT             , "NEWUNIT",              0x88000000u) \
    X(146, ERRIMAGENUM         , "ERRIMAGENUM",          0x20000000u) \
    X(147, 2008STD             , "2008STD",              0x10000000u) \
    X(148, ERRTRACE            , "ERRTRACE",             0x20000000u) \
    X(149, UFMT_BIGENDIAN      , "UFMT_BIGENDIAN",       0x20000000u)

enum VrnKeyword {
    VRN_KEY_UNKNOWN_KEYWORD = 0,
#define VRN_KEYWORD_ENUM(number, identifier, name, flags) VRN_KEY_##identifier = number,
    VRN_KEYWORD_TABLE(VRN_KEYWORD_ENUM)
#undef VRN_KEYWORD_ENUM
    VRN_KEYWORD_COUNT = 150
};

/* Tags of the 64-bit forms of specifiers in a KeywordList.
 * INQUIRE: an INTEGER(8) variable (NUMBER, RECL, NEXTREC, SIZE, POS, IOLENGTH) and a
 * LOGICAL(8) variable (EXIST, OPENED, NAMED, PENDING); a = its address, b = the keyword
 * number of the specifier. */
#define VRN_TAG_INQUIRE_INT8 0x8001u
#define VRN_TAG_ID8        0x8002u
#define VRN_TAG_INQUIRE_LOG8 0x8003u
#define VRN_TAG_POS8       0x8006u
#define VRN_TAG_IOSTAT8    0x8007u
#define VRN_TAG_NEWUNIT8   0x8008u

#endif
