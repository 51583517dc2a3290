#include "format/descriptor_table.h"

#include <cstdint>
#include <initializer_list>

namespace {

constexpr int64_t kWordMax = 2147483647;
constexpr int64_t kSlotMax = INT64_MAX;

constexpr DefaultTriple kWidth1{1, 0, 0};   // RDefaults, XDefaults
constexpr DefaultTriple kScale0{0, 0, 0};   // ScaleDefaults
constexpr DefaultTriple kWidth2{2, 0, 0};   // LDefaults

constexpr DefaultTriple kI1{5, 1, 0}, kI2{7, 1, 0}, kI4{12, 1, 0}, kI8{21, 1, 0};
constexpr DefaultTriple kF4{16, 7, 0}, kF8{34, 16, 0}, kF16{42, 20, 0};
constexpr DefaultTriple kE4{15, 7, 2}, kE8{25, 16, 3}, kE16{30, 20, 3};
constexpr DefaultTriple kEN4{17, 7, 2}, kEN8{27, 16, 3}, kEN16{32, 20, 3};

// Indexed by normalised size; a size between two rows reads the row below.
constexpr const DefaultTriple* IDefaults[17] = {nullptr, &kI1, &kI2, &kI2, &kI4, &kI4, &kI4, &kI4, &kI8,
                                                &kI8,    &kI8, &kI8, &kI8, &kI8, &kI8, &kI8, &kI8};
constexpr const DefaultTriple* FDefaults[17] = {nullptr, nullptr, nullptr, nullptr, &kF4, &kF4, &kF4, &kF4, &kF8,
                                                &kF8,    &kF8,    &kF8,    &kF8,    &kF8, &kF8, &kF8, &kF16};
constexpr const DefaultTriple* EDefaults[17] = {nullptr, nullptr, nullptr, nullptr, &kE4, &kE4, &kE4, &kE4, &kE8,
                                                &kE8,    &kE8,    &kE8,    &kE8,    &kE8, &kE8, &kE8, &kE16};
constexpr const DefaultTriple* ENDefaults[17] = {nullptr, nullptr, nullptr, nullptr, &kEN4, &kEN4,
                                                 &kEN4,   &kEN4,   &kEN8,   &kEN8,   &kEN8, &kEN8,
                                                 &kEN8,   &kEN8,   &kEN8,   &kEN8,   &kEN16};

constexpr DescDefaultRow Ranges(std::initializer_list<OperandRange> ranges) {
    DescDefaultRow row{};
    for (const OperandRange& range : ranges) row.ranges[row.rangeCount++] = range;
    return row;
}

constexpr DescDefaultRow WithSizes(DescDefaultRow row, DefaultKind kind, const int8_t* sizes,
                                   const DefaultTriple* const* bySize) {
    row.defaultKind = kind;
    row.sizes = sizes;
    row.defaultsBySize = bySize;
    return row;
}

constexpr DescDefaultRow WithConstant(DescDefaultRow row, const DefaultTriple* triple) {
    row.defaultKind = kConstantDefaults;
    row.constantDefaults = triple;
    return row;
}

constexpr DescDefaultRow ZeroWidthError(DescDefaultRow row) {
    row.zeroWidthError = 1;
    return row;
}

constexpr DescDefaultRow AnySize(DescDefaultRow row) {
    row.anySize = 1;
    return row;
}

constexpr DescDefaultRow BozRow(DefaultFunction function) {
    DescDefaultRow row = ZeroWidthError(Ranges({{0, 2000}, {0, 2000}}));
    row.defaultKind = kDefaultFunction;
    row.defaultFunction = function;
    return row;
}

struct Table {
    DescDefaultRow rows[kDescriptorCodes];
};

constexpr Table BuildTable() {
    Table t{};
    DescDefaultRow* r = t.rows;
    r[4] = WithConstant(Ranges({{1, kWordMax}}), &kWidth1);
    r[11] = WithConstant(Ranges({{-127, 128}}), &kScale0);
    r[15] = r[16] = r[17] = Ranges({{1, kWordMax}});
    r[18] = WithConstant(Ranges({{1, kWordMax}}), &kWidth1);
    r[20] = r[21] = WithSizes(ZeroWidthError(Ranges({{0, 2000}, {0, 2000}})), kDefaultsBySize, IntSizes, IDefaults);
    r[22] = r[23] = BozRow(GetBDefaults);
    r[24] = r[25] = BozRow(GetODefaults);
    r[26] = r[27] = BozRow(GetZDefaults);
    DescDefaultRow e = Ranges({{1, 2000}, {0, 2000}, {1, 2000}});
    r[28] = r[29] = WithSizes(e, kDefaultsBySize, RealSizes, EDefaults);
    r[30] = WithSizes(ZeroWidthError(Ranges({{0, 2000}, {0, 2000}})), kDefaultsBySize, RealSizes, FDefaults);
    r[31] = r[32] = r[33] = r[34] = WithSizes(e, kDefaultsBySize, RealSizes, EDefaults);
    r[35] = r[36] = r[37] = r[38] = WithSizes(e, kDefaultsBySize, RealSizes, ENDefaults);
    r[39] = r[40] = r[41] = r[42] = AnySize(Ranges({{1, kWordMax}, {0, kWordMax}, {1, kWordMax}}));
    r[43] = WithConstant(Ranges({{1, 2000}}), &kWidth2);
    r[43].sizes = IntSizes;
    r[44] = AnySize(DescDefaultRow{});
    r[45] = AnySize(Ranges({{1, kWordMax}}));
    r[45].defaultKind = kSizeIsWidth;
    r[46].sizes = IntSizes;
    r[49] = Ranges({{1, kWordMax}});
    r[50] = AnySize(DescDefaultRow{});
    return t;
}

constexpr Table Widen(Table t) {
    for (DescDefaultRow& row : t.rows) {
        for (OperandRange& range : row.ranges) {
            if (range.maximum == kWordMax) range.maximum = kSlotMax;
        }
    }
    return t;
}

constexpr Table kTable = BuildTable();
constexpr Table kTable64 = Widen(kTable);

int32_t CapWidth(int32_t width) { return width > 2000 ? 2000 : width; }

}  // namespace

constinit const int8_t IntSizes[17] = {-1, 1, 2, 2, 4, 4, 4, 4, 8, 8, 8, 8, 8, 8, 8, 8, 8};
constinit const int8_t RealSizes[17] = {-1, -1, -1, -1, 4, 4, 4, 4, 8, 8, 8, 8, 8, 8, 8, 8, 16};

constinit const DescDefaultRow DescDefaultTable[kDescriptorCodes] = {
#define ROW(n) kTable.rows[n]
#define ROWS10(n) ROW(n), ROW(n + 1), ROW(n + 2), ROW(n + 3), ROW(n + 4), ROW(n + 5), ROW(n + 6), ROW(n + 7), \
    ROW(n + 8), ROW(n + 9)
    ROWS10(0), ROWS10(10), ROWS10(20), ROWS10(30), ROWS10(40), ROWS10(50), ROW(60), ROW(61)};
#undef ROW
#define ROW(n) kTable64.rows[n]
constinit const DescDefaultRow DescDefaultTable64[kDescriptorCodes] = {
    ROWS10(0), ROWS10(10), ROWS10(20), ROWS10(30), ROWS10(40), ROWS10(50), ROW(60), ROW(61)};
#undef ROW
#undef ROWS10

DefaultTriple GetBDefaults(int32_t bytes) { return {CapWidth(8 * bytes + 1), 1, 0}; }
DefaultTriple GetODefaults(int32_t bytes) { return {CapWidth((8 * bytes + 2) / 3 + 1), 1, 0}; }
DefaultTriple GetZDefaults(int32_t bytes) { return {CapWidth(2 * bytes + 1), 1, 0}; }

constinit const uint8_t DescOperands[kDescriptorCodes] = {
    0, 4, 0, 0, 1, 0, 2, 0, 0, 0,   // 0-9: no-op, Header, ( ) Repeat End Cont / : BN
    0, 1, 0, 0, 0, 1, 1, 1, 1, 0,   // 10-19: BZ P S SS SP T TL TR X $
    1, 2, 1, 2, 1, 2, 1, 2, 2, 2,   // 20-29: I Im B Bm O Om Z Zm D Qw.d
    2, 2, 3, 3, 3, 2, 3, 2, 3, 2,   // 30-39: F E EEe EDe EQe EN ENe ES ESe G
    3, 3, 3, 1, 0, 1, 0, 2, 2, 2,   // 40-49: GEe GDe GQe L A Aw Q ' " H
    4, 0, 0, 0, 0, 0, 0, 0, 0, 5,   // 50-59: DT DC DP RU RD RZ RN RC RP Header (Padded)
    0, 0};

constinit const char* const DescName[kDescriptorCodes] = {
    "Unknown descriptor", "Header", "(", ")", "Repeat", "End", "Cont", "/", ":", "BN",
    "BZ", "P", "S", "SS", "SP", "T", "TL", "TR", "X", "$",
    "I", "I", "B", "B", "O", "O", "Z", "Z", "D", "Qw.d",
    "F", "E", "E", "E", "E", "EN", "EN", "ES", "ES", "G",
    "G", "G", "G", "L", "A", "A", "Q", "'", "\"", "H",
    "DT", "DC", "DP", "RU", "RD", "RZ", "RN", "RC", "RP", "Header (Padded)",
    "Unknown descriptor", "Unknown descriptor"};

constinit const char* const VirtualDescName[kVirtualCodes] = {
    "(", ")", "Repeat", "/", ":", "BN", "BZ", "P", "S", "SS", "SP", "T", "TL", "TR",
    "X", "$", "I", "B", "O", "Z", "D", "Qw.d", "F", "E", "EN", "ES", "G", "L",
    "A", "Q", "'", "\"", "H", "DT", "DC", "DP", "RU", "RD", "RZ", "RN", "RC", "RP"};

constinit const int8_t VirtualDescCode[kDescriptorCodes] = {
    -1, -1, 0,  1,  2,  1,  -1, 3,  4,  5,    // 0-9
    6,  7,  8,  9,  10, 11, 12, 13, 14, 15,   // 10-19
    16, 16, 17, 17, 18, 18, 19, 19, 20, 21,   // 20-29
    22, 23, 23, 23, 23, 24, 24, 25, 25, 26,   // 30-39
    26, 26, 26, 27, 28, 28, 29, 30, 31, 32,   // 40-49
    33, 34, 35, 36, 37, 38, 39, 40, 41, -1,   // 50-59
    -1, -1};
