// The format encoder as a compiler calls it: text and flags in, words and diagnostics out.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "format/encoded_format.h"
#include "tests/support/fortran.h"
#include "vrn90.h"

namespace {

struct Diagnostic {
    intptr_t code, number, position, virtualCode, a, b, c;
    bool operator==(const Diagnostic&) const = default;
};

std::vector<Diagnostic> diagnostics;
intptr_t answer = 1;

intptr_t Record(intptr_t code, intptr_t number, intptr_t position, intptr_t virtualCode, intptr_t a, intptr_t b,
                intptr_t c, intptr_t) {
    diagnostics.push_back({code, number, position, virtualCode, a, b, c});
    return answer;
}

// One encoding: the code's units widened to 64 bits, whatever the encoding.
struct Encoding {
    intptr_t result = 0;
    std::vector<int64_t> units;
    const void* code = nullptr;
    int32_t bytes = 0;
    int32_t expressionCount = 0;
    VrnFormatExpression* expressions = nullptr;
    std::vector<intptr_t> codes() const {
        std::vector<intptr_t> out;
        for (const Diagnostic& d : diagnostics) out.push_back(d.code);
        return out;
    }
};

Encoding Encode(const std::string& text, uint32_t flags, intptr_t reply = 1) {
    diagnostics.clear();
    answer = reply;
    Encoding out;
    void* code = nullptr;
    VrnFormatText format{text.data(), static_cast<int32_t>(text.size())};
    out.result = _vrnEncodeFormat(&format, flags, Record, &out.expressionCount, &out.expressions, &code, &out.bytes);
    out.code = code;
    if (out.result != 1) return out;
    bool wide = _vrnEncodingMode(code) == 2;
    int unit = wide ? 8 : 4;
    // A chained code is one block no more: only its header is read here.
    int64_t codeFlags = wide ? static_cast<const int64_t*>(code)[3] : static_cast<const int32_t*>(code)[3];
    int32_t units = (codeFlags & VRN_FMT_CONTIGUOUS) ? out.bytes / unit : 5;
    for (int32_t i = 0; i < units; ++i) {
        if (wide) {
            int64_t slot;
            std::memcpy(&slot, static_cast<const char*>(code) + 8 * i, 8);
            out.units.push_back(slot);
        } else {
            int32_t word;
            std::memcpy(&word, static_cast<const char*>(code) + 4 * i, 4);
            out.units.push_back(word);
        }
    }
    return out;
}

// The operations behind the header.
std::vector<int64_t> Body(const Encoding& e) {
    return e.units.size() > 5 ? std::vector<int64_t>(e.units.begin() + 5, e.units.end()) : std::vector<int64_t>{};
}

// An op word as a 32-bit code holds it; a 64-bit slot holds the same bits unsigned.
int64_t Op(uint32_t code, uint32_t kinds = 0) { return static_cast<int32_t>((code << 16) | kinds); }
int64_t Slot(int64_t op) { return static_cast<uint32_t>(op); }
int64_t Control(uint32_t code, uint32_t kinds = 0) { return Op(0x8000u | code, kinds); }
const int64_t kOpen = Control(VRN_FMT_LPAREN), kClose = Control(VRN_FMT_RPAREN), kEnd = Control(VRN_FMT_END);

// A string op's units, its bytes laid in memory as the encoder lays them.
std::vector<int64_t> StringOp(uint32_t code, const std::string& bytes, int unit = 4) {
    int64_t op = unit == 4 ? Control(code, 0x11) : Slot(Control(code, 0x11));
    std::vector<int64_t> out{op, static_cast<int64_t>(bytes.size())};
    size_t units = (bytes.size() + unit - 1) / unit;
    out.push_back(static_cast<int64_t>(3 + units));
    std::string padded = bytes + std::string(units * unit - bytes.size(), '\0');
    for (size_t i = 0; i < units; ++i) {
        if (unit == 4) {
            int32_t word;
            std::memcpy(&word, padded.data() + 4 * i, 4);
            out.push_back(word);
        } else {
            int64_t slot;
            std::memcpy(&slot, padded.data() + 8 * i, 8);
            out.push_back(slot);
        }
    }
    return out;
}

std::vector<int64_t> Join(std::initializer_list<std::vector<int64_t>> parts) {
    std::vector<int64_t> out;
    for (const auto& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

struct CodeCase {
    const char* text;
    uint32_t flags;
    std::vector<int64_t> body;
    int64_t depth;
};

TEST(FormatEncoder, EveryDescriptorHasItsWords) {
    const CodeCase cases[] = {
        {"()", 0, {kOpen, kEnd}, 1},
        {"(I5)", 0, {kOpen, Op(20, 1), 5, kEnd}, 1},
        {"(i5.3, B8, O4.2, Z16, B0.0)", 0,
         {kOpen, Op(21, 0x11), 5, 3, Op(22, 1), 8, Op(25, 0x11), 4, 2, Op(26, 1), 16, Op(23, 0x11), 0, 0, kEnd}, 1},
        {"(3(I2))", 0, {kOpen, Control(4, 1), 3, kOpen, Op(20, 1), 2, kClose, kEnd}, 2},
        {"(2(I2,(A)),/)", 0,
         {kOpen, Control(4, 1), 2, kOpen, Op(20, 1), 2, kOpen, Op(44), kClose, kClose, Control(7), kEnd}, 3},
        {"(3P,2PF5.1)", 0, {kOpen, Control(11, 1), 3, Control(11, 1), 2, Op(30, 0x11), 5, 1, kEnd}, 1},
        {"(-2PE12.4E3, 1PD9.2, ES10.2, EN9.1E2, E10.3D2, E10.3Q4)", 0,
         {kOpen, Control(11, 1), -2, Op(32, 0x111), 12, 4, 3, Control(11, 1), 1, Op(28, 0x11), 9, 2,
          Op(37, 0x11), 10, 2, Op(36, 0x111), 9, 1, 2, Op(33, 0x111), 10, 3, 2, Op(34, 0x111), 10, 3, 4, kEnd},
         1},
        {"(G10.3, G12.4E2, G7, G9.0D1)", 0,
         {kOpen, Op(0x4027, 0x11), 10, 3, Op(0x4028, 0x111), 12, 4, 2, Op(0x4027, 0x31), 7, 0,
          Op(0x4029, 0x111), 9, 0, 1, kEnd},
         1},
        {"(A, A10, L3, 2X, T5, TL2, TR3, :, $)", 0,
         {kOpen, Op(44), Op(45, 1), 10, Op(43, 1), 3, Control(18, 1), 2, Control(15, 1), 5, Control(16, 1), 2,
          Control(17, 1), 3, Control(8), Control(19), kEnd},
         1},
        {"(BN,BZ,S,SS,SP,DC,DP,RU,RD,RZ,RN,RC,RP)", 0,
         {kOpen, Control(9), Control(10), Control(12), Control(13), Control(14), Control(51), Control(52),
          Control(53), Control(54), Control(55), Control(56), Control(57), Control(58), kEnd},
         1},
        {"(Q, Q10.2)", VRN_FMT_Q_COUNT, {kOpen, Op(46), Op(29, 0x11), 10, 2, kEnd}, 1},
        {"( 1 2 X , i 5 )", 0, {kOpen, Control(18, 1), 12, Op(20, 1), 5, kEnd}, 1},
        {"(1X/I2:)", 0, {kOpen, Control(18, 1), 1, Control(7), Op(20, 1), 2, Control(8), kEnd}, 1},
        {"('ab''c', \"x\"\"\", 3Ha'c, '')", 0,
         Join({{kOpen}, StringOp(47, "ab'c"), StringOp(48, "x\""), StringOp(49, "a'c"), {kEnd}}), 1},
        {"('a\\nb\\'\\\\\\q')", VRN_FMT_ESCAPES, Join({{kOpen}, StringOp(47, "a\nb'\\q"), {kEnd}}), 1},
        {"('a\\nb')", 0, Join({{kOpen}, StringOp(47, "a\\nb"), {kEnd}}), 1},
        {"(2Ha\\n)", VRN_FMT_ESCAPES, Join({{kOpen}, StringOp(49, "a\n"), {kEnd}}), 1},
    };
    for (const CodeCase& c : cases) {
        Encoding e = Encode(c.text, c.flags | VRN_FMT_COMPILE_TIME);
        ASSERT_EQ(e.result, 1) << c.text;
        EXPECT_TRUE(diagnostics.empty()) << c.text << " first code " << diagnostics[0].code;
        EXPECT_EQ(Body(e), c.body) << c.text;
        ASSERT_GE(e.units.size(), 5u);
        EXPECT_EQ(e.units[0], Control(VRN_FMT_HEADER)) << c.text;
        EXPECT_EQ(e.units[1], static_cast<int64_t>(e.units.size())) << c.text;
        EXPECT_EQ(e.units[2], c.depth) << c.text;
        bool hasT = std::string(c.text).find("T5") != std::string::npos;
        EXPECT_EQ(e.units[3], VRN_FMT_CONTIGUOUS | (hasT ? VRN_FMT_HAS_T : 0)) << c.text;
        // The compiler stores this code in an object file: no Cont address may stay in it.
        EXPECT_EQ(e.units[4], 0) << c.text;
        EXPECT_EQ(_vrnEncodingMode(e.code), 1) << c.text;
        Encoding wide = Encode(c.text, c.flags | VRN_FMT_COMPILE_TIME | VRN_FMT_64BIT);
        ASSERT_EQ(wide.result, 1) << c.text;
        EXPECT_EQ(wide.units[4], 0) << c.text;
        EXPECT_EQ(wide.bytes, wide.units[1] * 8) << c.text;
    }
}

TEST(FormatEncoder, TheDTOpCarriesItsTypeAndVList) {
    Encoding e = Encode("(DT'pt'(1,-2), DT, 2DT\"a\")", VRN_FMT_COMPILE_TIME);
    ASSERT_EQ(e.result, 1);
    EXPECT_TRUE(diagnostics.empty());
    int32_t one = 1, minusTwo = -2, head = 2;
    int32_t tp;
    std::memcpy(&tp, "pt\0\0", 4);
    int32_t a;
    std::memcpy(&a, "a\0\0\0", 4);
    std::vector<int64_t> expected{kOpen,
                                  Op(50, 0x1111), 2, 4, 12, 9, tp, head, one, minusTwo,
                                  Op(50, 0x1111), 0, 4, 0, 5,
                                  Control(4, 1), 2, Op(50, 0x1111), 1, 4, 0, 6, a,
                                  kEnd};
    EXPECT_EQ(Body(e), expected);

    // Two-byte elements under the 2-byte default integer, packed two to a word.
    e = Encode("(DT(7,-8,9))", VRN_FMT_COMPILE_TIME | VRN_FMT_INTEGER2);
    ASSERT_EQ(e.result, 1);
    ASSERT_EQ(Body(e).size(), 1u + 5 + 3 + 1);
    EXPECT_EQ(Body(e)[2], 0);   // no type
    EXPECT_EQ(Body(e)[3], 2);   // element width
    EXPECT_EQ(Body(e)[4], 10);  // head and three entries
    const auto* list = static_cast<const char*>(e.code) + 4 * (5 + 1 + 5);
    int32_t listHead;
    int16_t entries[3];
    std::memcpy(&listHead, list, 4);
    std::memcpy(entries, list + 4, 6);
    EXPECT_EQ(listHead, 3);
    EXPECT_EQ(entries[0], 7);
    EXPECT_EQ(entries[1], -8);
    EXPECT_EQ(entries[2], 9);
}

struct DiagnosticCase {
    const char* text;
    uint32_t flags;
    std::vector<intptr_t> codes;
};

TEST(FormatEncoder, EveryErrorReachesTheCallbackAndIsRepaired) {
    constexpr uint32_t C = VRN_FMT_COMPILE_TIME;
    constexpr uint32_t X = VRN_FMT_EXPRESSIONS;
    const DiagnosticCase cases[] = {
        {"", 0, {1}},
        {"   ", 0, {1}},
        {"I5)", 0, {2}},
        {"(0Habc)", 0, {3}},
        {"(2'ab')", 0, {4}},
        {"(I5,3)", 0, {4}},
        {"(2:)", 0, {4}},
        {"(3T5)", 0, {4}},
        {"(3,I5)", 0, {5}},
        {"(0I5)", 0, {6}},
        {"(I5,,I5)", 0, {7}},
        {"(I5,)", 0, {7}},
        {"(,I5)", 0, {7}},
        {"(I5 I5)", 0, {8}},
        {"(2PI5)", 0, {8}},
        {"(1PE10.3)", VRN_FMT_LEVEL_F90, {}},
        {"(1P3E10.3)", VRN_FMT_LEVEL_F90, {8}},
        {"(1P3E10.3)", 0, {}},
        {"(I)", 0, {9}},
        {"(L)", 0, {9}},
        {"(X)", VRN_FMT_LEVEL_F90, {9}},
        {"(X)", 0, {}},
        {"(P)", 0, {10}},
        {"(129P)", 0, {11}},
        {"(T)", 0, {12}},
        {"(T0)", 0, {13}},
        {"(0X)", 0, {13}},
        {"(K5)", 0, {14}},
        {"(RX)", 0, {14}},
        {"(-3X)", 0, {14}},
        {"(I5", 0, {15}},
        {"(I5.)", 0, {16}},
        {"(F10)", 0, {17}},
        {"(F10.)", 0, {18}},
        {"(E10.3E)", 0, {19}},
        {"(H)", 0, {20}},
        {"(I2001)", 0, {21}},
        {"(A0)", 0, {21}},
        {"(L2001)", 0, {21}},
        {"(I5.2001)", 0, {22}},
        {"(F5.2001)", 0, {23}},
        {"(E10.3E2001)", 0, {24}},
        {"('abc", 0, {25, 15}},
        {"(5HAB)", 0, {26, 15}},
        {"(B8)", VRN_FMT_LEVEL_F77, {27}},
        {"(DC)", VRN_FMT_LEVEL_F90, {28}},
        {"(DC)", VRN_FMT_LEVEL_F95, {28}},
        {"(O8)", VRN_FMT_LEVEL_PRE90, {29}},
        {"(3/)", VRN_FMT_LEVEL_F77, {30}},
        {"(3/)", 0, {}},
        {"(I5.6)", C, {31}},
        {"(I5.6)", 0, {}},
        {"(F3.4)", C, {32}},
        {"(E5.1E6)", C, {33}},
        {"(E6.2E5)", C, {34}},
        {"(I5) x", C, {35}},
        {"(I5) x", 0, {}},
        {"(I<n)", X, {37, 9, 15}},
        {"(-<n>P)", X, {38}},
        {"(3Habc)", VRN_FMT_NO_HOLLERITH, {39}},
        {"(E10.3D2)", VRN_FMT_LEVEL_F77, {40}},
        {"(E10.3D2)", VRN_FMT_LEVEL_F90, {41}},
        {"(<n>Habc)", X, {42}},
        {"(I99999999999)", 0, {43, 9}},
        {"(I2147483648)", 0, {43, 9}},
        {"(3Habc)", VRN_FMT_LEVEL_F95, {44}},
        {"(I0)", VRN_FMT_LEVEL_F90, {45}},
        {"(I0)", 0, {}},
        {"(DC)", VRN_FMT_LEVEL_F2003, {}},
        {"($)", VRN_FMT_LEVEL_F2003, {46}},
        {"(DT())", 0, {47}},
        {"(DT(1,,2))", 0, {7}},
        {"(DT(1,))", 0, {7}},
        {"(DT(a))", 0, {48}},
        {"(DT(\x01))", 0, {49}},
        {"(DT(99999))", VRN_FMT_INTEGER2, {43}},
        {"(DT'x)", 0, {25, 15}},
        {"(Q)", VRN_FMT_Q_COUNT | VRN_FMT_LEVEL_F2008, {50}},
        {"($)", VRN_FMT_LEVEL_F77, {27}},
        {"(Q)", VRN_FMT_Q_COUNT | VRN_FMT_LEVEL_F90, {28}},
        {"(G10)", VRN_FMT_LEVEL_F90, {17}},
        {"(ES10.2D3)", VRN_FMT_LEVEL_F77, {27, 8, 17}},
    };
    for (const DiagnosticCase& c : cases) {
        Encoding e = Encode(c.text, c.flags);
        EXPECT_EQ(e.result, 1) << c.text;
        EXPECT_EQ(e.codes(), c.codes) << '"' << c.text << "\" flags " << c.flags;
        if (e.result != 1) continue;
        // Repaired codes are well formed: a header, then "(" and at the end "End".
        ASSERT_GE(e.units.size(), 7u) << c.text;
        EXPECT_EQ(e.units[5], kOpen) << c.text;
        EXPECT_EQ(e.units.back(), kEnd) << c.text;
    }
}

TEST(FormatEncoder, DiagnosticsCarryTheirArguments) {
    // The second comma of "(I5,,I5)": after "(" and the first I, at offset 4.
    Encode("(I5,,I5)", 0);
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0], (Diagnostic{7, 2, 4, 16, 0, 0, 0}));

    // A width error names the descriptor about to be generated; its position is the letter.
    Encoding e = Encode("(I5, F2001.3)", 0);
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0], (Diagnostic{21, 3, 5, 22, 2001, 0, 0}));
    EXPECT_EQ(Body(e)[3], Op(30, 0x13));  // w omitted: the run-time default

    // A repeat error's position is where the count began.
    Encode("(I5, 2 :)", 0);
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0], (Diagnostic{4, 3, 5, 4, 2, 0, 0}));

    Encode("(I5.9,F3.7,E5.1E9,E6.2E5)", VRN_FMT_COMPILE_TIME);
    ASSERT_EQ(diagnostics.size(), 4u);
    EXPECT_EQ(diagnostics[0].a, 5);
    EXPECT_EQ(diagnostics[0].b, 9);
    EXPECT_EQ(diagnostics[1], (Diagnostic{32, 3, 6, 22, 3, 7, 0}));
    EXPECT_EQ(diagnostics[2].b, 9);
    EXPECT_EQ(diagnostics[3], (Diagnostic{34, 5, 18, 23, 6, 2, 5}));

    Encode("(I5, Kx)", 0);
    EXPECT_EQ(diagnostics[0].a, 'K');
    Encode("(E10.3D2)", VRN_FMT_LEVEL_F90);
    EXPECT_EQ(diagnostics[0].a, 'd');
    Encode("(5HAB)", 0);
    EXPECT_EQ(diagnostics[0].a, 5);
}

TEST(FormatEncoder, RepairsFollowTheRules) {
    // An overflowing width is omitted, then reported as missing.
    EXPECT_EQ(Body(Encode("(I2147483648)", 0)), (std::vector<int64_t>{kOpen, Op(20, 3), 0, kEnd}));
    // A bad A width leaves the A without width.
    EXPECT_EQ(Body(Encode("(A0)", 0)), (std::vector<int64_t>{kOpen, Op(44), kEnd}));
    // L without w takes width 2 as a constant.
    EXPECT_EQ(Body(Encode("(L)", 0)), (std::vector<int64_t>{kOpen, Op(43, 1), 2, kEnd}));
    // A repeated literal is written once; a cut Hollerith leaves nothing.
    EXPECT_EQ(Body(Encode("(2'ab')", 0)), Join({{kOpen}, StringOp(47, "ab"), {kEnd}}));
    EXPECT_EQ(Body(Encode("(5HAB)", 0)), (std::vector<int64_t>{kOpen, kEnd}));
    // An unclosed format closes itself, every level.
    EXPECT_EQ(Body(Encode("(I5", 0)), Body(Encode("(I5)", 0)));
    EXPECT_EQ(Body(Encode("(2(I5,(A", 0)), Body(Encode("(2(I5,(A)))", 0)));
    // "(I5 I5)" encodes both.
    EXPECT_EQ(Body(Encode("(I5 I5)", 0)), Body(Encode("(I5,I5)", 0)));
    // P without a count is scale 0; a bad T is dropped and clears the T flag.
    EXPECT_EQ(Body(Encode("(P,F5.1)", 0)), Body(Encode("(0P,F5.1)", 0)));
    Encoding t = Encode("(T5,T0)", 0);
    EXPECT_EQ(Body(t), (std::vector<int64_t>{kOpen, Control(15, 1), 5, kEnd}));
    EXPECT_EQ(t.units[3], VRN_FMT_CONTIGUOUS);
    // No opening parenthesis: encoded as if it stood there.
    EXPECT_EQ(Body(Encode("I5)", 0)), Body(Encode("(I5)", 0)));
}

TEST(FormatEncoder, TheCallbacksAnswerStopsTheEncoding) {
    for (intptr_t reply : {intptr_t{0}, intptr_t{7}}) {
        for (const char* text : {"(I5,,I5)", "(K)", "('abc", "(I5", "(DT(a))", "(F2001.1)"}) {
            Encoding e = Encode(text, 0, reply);
            EXPECT_EQ(e.result, reply) << text;
            EXPECT_EQ(diagnostics.size(), 1u) << text;
        }
    }
}

TEST(FormatEncoder, ALongLiteralCrossesChunksAndPacksAlike) {
    std::string literal;
    for (int i = 0; i < 90000; ++i) literal += static_cast<char>('a' + i % 26);
    std::string text = "(I5,'" + literal + "',I3)";

    // At run time the code is chained; the pieces of the literal join to the literal.
    Encoding chained = Encode(text, 0);
    ASSERT_EQ(chained.result, 1);
    const auto* header = static_cast<const int32_t*>(chained.code);
    EXPECT_EQ(header[3] & VRN_FMT_CONTIGUOUS, 0);
    std::string joined;
    std::vector<int32_t> pieces;
    std::vector<int64_t> ops;
    int conts = 0;
    for (const int32_t* op = header + 5;;) {
        uint32_t code = static_cast<uint32_t>(op[0]) >> 16;
        if (code == 0x8006) {
            ++conts;
            op = ContTarget(op);
            continue;
        }
        ops.push_back(op[0]);
        if (code == 0x802F) {
            joined.append(reinterpret_cast<const char*>(op + 3), op[1]);
            pieces.push_back(op[1]);
            op += op[2];
            continue;
        }
        if (code == 0x8005) break;
        op += 1 + (code == 0x8002 ? 0 : 1);
    }
    EXPECT_EQ(joined, literal);
    EXPECT_EQ(conts, 3);
    // The first chunk holds 10240 words less three for its Cont; the literal's op starts
    // behind the header, "(" and I5, and its text behind three more words.
    ASSERT_EQ(pieces.size(), 4u);
    EXPECT_EQ(pieces[0], (10240 - 3 - 8 - 3) * 4);
    EXPECT_EQ(pieces[1], (5120 - 3 - 3) * 4);
    EXPECT_EQ(ops.back(), kEnd);
    FreeFormatExtensions(const_cast<void*>(chained.code));

    // The compile-time code is one block with the same operations.
    Encoding packed = Encode(text, VRN_FMT_COMPILE_TIME);
    ASSERT_EQ(packed.result, 1);
    EXPECT_EQ(packed.units[3], VRN_FMT_CONTIGUOUS);
    EXPECT_EQ(packed.units[4], 0);
    EXPECT_EQ(packed.bytes, chained.bytes);
    std::string packedJoined;
    std::vector<int32_t> packedPieces;
    for (size_t i = 5; i < packed.units.size();) {
        uint32_t code = static_cast<uint32_t>(packed.units[i]) >> 16;
        if (code == 0x802F) {
            const auto* op = static_cast<const int32_t*>(packed.code) + i;
            packedJoined.append(reinterpret_cast<const char*>(op + 3), op[1]);
            packedPieces.push_back(op[1]);
            i += op[2];
        } else {
            i += code == 0x0014 ? 2 : 1;
        }
    }
    EXPECT_EQ(packedJoined, literal);
    EXPECT_EQ(packedPieces, pieces);
    std::free(const_cast<void*>(packed.code));

    // A 64-bit code breaks its chunks the same way, in slots.
    Encoding wide = Encode(text, VRN_FMT_COMPILE_TIME | VRN_FMT_64BIT);
    ASSERT_EQ(wide.result, 1);
    EXPECT_EQ(wide.units[8], Slot(Control(VRN_FMT_APOSTROPHE, 0x11)));
    EXPECT_EQ(wide.units[9], (10240 - 2 - 8 - 3) * 8);
    std::free(const_cast<void*>(wide.code));
}

TEST(FormatEncoder, TheSixtyFourBitEncodingUsesSlotsAndWiderRanges) {
    constexpr uint32_t kWide = VRN_FMT_COMPILE_TIME | VRN_FMT_64BIT;
    Encoding e = Encode("(I5,2147483648X,'abcdefghij',T3)", kWide);
    ASSERT_EQ(e.result, 1);
    EXPECT_TRUE(diagnostics.empty());
    EXPECT_EQ(_vrnEncodingMode(e.code), 2);
    EXPECT_EQ(e.units[0], int64_t{0x80010000});
    EXPECT_EQ(e.units[3], VRN_FMT_CONTIGUOUS | VRN_FMT_ENCODING64 | VRN_FMT_HAS_T);
    EXPECT_EQ(Body(e), Join({{Slot(kOpen), Slot(Op(20, 1)), 5, Slot(Control(18, 1)), 2147483648LL},
                             StringOp(47, "abcdefghij", 8), {Slot(Control(15, 1)), 3, Slot(kEnd)}}));
    EXPECT_EQ(e.bytes, static_cast<int32_t>(8 * e.units.size()));
    // The same count overflows a word.
    Encode("(2147483648X)", VRN_FMT_COMPILE_TIME);
    EXPECT_EQ(Encode("(2147483648X)", VRN_FMT_COMPILE_TIME).codes(), (std::vector<intptr_t>{43}));
    EXPECT_EQ(Encode("(9223372036854775808X)", kWide).codes(), (std::vector<intptr_t>{43}));
    // 64-bit only at compile time: the flag alone keeps 32-bit words.
    EXPECT_EQ(_vrnEncodingMode(Encode("(I5)", VRN_FMT_64BIT).code), 1);
    int32_t junk[8] = {};
    EXPECT_EQ(_vrnEncodingMode(junk), 0);
}

TEST(FormatEncoder, ExpressionsAreListedAndFoldedConstantsReplaceThem) {
    constexpr uint32_t kFlags = VRN_FMT_COMPILE_TIME | VRN_FMT_EXPRESSIONS;
    std::string text = "(I<n>, <k>X, F<w>.<d>, <r>(A), DT(1,<v>))";
    Encoding e = Encode(text, kFlags);
    ASSERT_EQ(e.result, 1);
    EXPECT_TRUE(diagnostics.empty());
    ASSERT_EQ(e.expressionCount, 6);
    std::vector<int64_t> body = Body(e);
    EXPECT_EQ(body[1], Op(20, 2));
    EXPECT_EQ(body[2], 0);                 // the first expression
    EXPECT_EQ(body[3], Control(18, 2));
    EXPECT_EQ(body[5], Op(30, 0x22));
    const VrnFormatExpression& n = e.expressions[0];
    EXPECT_EQ(n.textPosition, 3);
    EXPECT_EQ(n.textLength, 3);
    EXPECT_EQ(n.byteOffset, 4 * 6);
    EXPECT_EQ(n.operandIndex, 0);
    EXPECT_EQ(n.descriptorNumber, 2);
    EXPECT_EQ(n.descriptorPosition, 1);
    EXPECT_EQ(e.expressions[2].operandIndex, 0);
    EXPECT_EQ(e.expressions[3].operandIndex, 1);
    EXPECT_EQ(e.expressions[3].byteOffset, e.expressions[2].byteOffset);
    EXPECT_EQ(e.expressions[5].operandIndex, 4);

    // Copy the table: the next encoding reuses it.
    std::vector<VrnFormatExpression> records(e.expressions, e.expressions + e.expressionCount);
    auto* code = static_cast<int32_t*>(const_cast<void*>(e.code));
    diagnostics.clear();
    answer = 1;
    EXPECT_EQ(_vrnSetFormatConstant(code, Record, &records[0], 7), 1);
    EXPECT_EQ(code[6], static_cast<int32_t>(Op(20, 1)));
    EXPECT_EQ(code[7], 7);
    // Out of range: the callback hears of it, and on 1 the operand is left to the default.
    EXPECT_EQ(_vrnSetFormatConstant(code, Record, &records[2], 2001), 1);
    EXPECT_EQ(code[10], static_cast<int32_t>(Op(30, 0x23)));
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0].code, 21);
    EXPECT_EQ(diagnostics[0].a, 2001);
    answer = 9;
    EXPECT_EQ(_vrnSetFormatConstant(code, Record, &records[1], 0), 9);
    EXPECT_EQ(diagnostics.back().code, 13);
    answer = 1;
    EXPECT_EQ(_vrnsetformatconstant(code, Record, &records[3], 0, 4), 1);
    EXPECT_EQ(code[10], static_cast<int32_t>(Op(30, 0x13)));
    EXPECT_EQ(code[12], 4);
    EXPECT_EQ(_vrnSetFormatConstant(code, Record, &records[4], 3), 1);
    // The DT entry becomes a folded constant group.
    EXPECT_EQ(_vrnSetFormatConstant(code, Record, &records[5], -5), 1);
    const auto* list = reinterpret_cast<const char*>(code) + records[5].byteOffset + 4 * 5;
    int32_t groups[4];
    std::memcpy(groups, list, sizeof groups);
    EXPECT_EQ(groups[0], 1);
    EXPECT_EQ(groups[1], 1);
    EXPECT_EQ(static_cast<uint32_t>(groups[2]), 0x80000001u);
    EXPECT_EQ(groups[3], -5);

    // A repeat that may not stand keeps its expression's place as a no-op.
    e = Encode("(I5,<m>)", kFlags);
    ASSERT_EQ(e.codes(), (std::vector<intptr_t>{4}));
    ASSERT_EQ(e.expressionCount, 1);
    EXPECT_EQ(Body(e)[3], Control(0));
    EXPECT_EQ(_vrnSetFormatConstant(const_cast<void*>(e.code), Record, e.expressions, 3), 1);
    EXPECT_EQ(Body(Encode("(I5,<m>)", kFlags))[3], Control(0));
    _vrnFreeFormatMemory();
}

TEST(FormatEncoder, TheEntriesTakeTheirArgumentsInTheirOrder) {
    void* code = nullptr;
    int32_t bytes = 0, count = -1;
    EXPECT_EQ(_vrnencodeformat("(I5)", 4, VRN_FMT_COMPILE_TIME, Record, &count, nullptr, &code, &bytes), 1);
    EXPECT_EQ(bytes, 4 * 9);
    EXPECT_EQ(count, 0);
    void* other = nullptr;
    EXPECT_EQ(_vrnencodeformat_fe(VRN_FMT_COMPILE_TIME, Record, &count, nullptr, &other, &bytes, "(A)", 3), 1);
    EXPECT_EQ(bytes, 4 * 8);
    EXPECT_EQ(other, code);  // the compile-time buffer
    _vrnfreeformatmemory();
}

}  // namespace
