// The scanner that classifies a real input field while it is read: a table of character
// classes and a state machine whose final state says whether the field needs the full
// conversion, can be converted at once, or is a value known without conversion.
#include <array>
#include <cstdint>

#include "convert/convert.h"

namespace {

enum Class : uint8_t {
    kOther = 0, kBlank = 1, kSign = 2, kZero = 3, kOne = 4, kFive = 5, kDigit = 6, kN = 7, kI = 8, kPoint = 9,
    kExponent = 10, kQ = 11, kComma = 12, kA = 13, kS = 14, kOpen = 15, kClose = 16, kLetter = 17, kF = 18, kT = 19,
    kY = 20,
};

constexpr std::array<uint8_t, 256> MakeClasses() {
    std::array<uint8_t, 256> classes{};
    for (int c = 'a'; c <= 'z'; ++c) classes[c] = classes[c - 32] = kLetter;
    classes['_'] = kLetter;
    classes[' '] = kBlank;
    classes['+'] = classes['-'] = kSign;
    classes['0'] = kZero;
    classes['1'] = kOne;
    classes['5'] = kFive;
    for (char c : {'2', '3', '4', '6', '7', '8', '9'}) classes[static_cast<unsigned char>(c)] = kDigit;
    const struct {
        char letter;
        Class value;
    } letters[] = {{'n', kN}, {'i', kI}, {'d', kExponent}, {'e', kExponent}, {'q', kQ}, {'a', kA},
                   {'s', kS}, {'f', kF}, {'t', kT},        {'y', kY}};
    for (auto l : letters) classes[static_cast<unsigned char>(l.letter)] = classes[static_cast<unsigned char>(l.letter - 32)] = l.value;
    classes['.'] = kPoint;
    classes[','] = kComma;
    classes['('] = kOpen;
    classes[')'] = kClose;
    return classes;
}

struct Machine {
    uint32_t next[kRealScannerStates][kScannerClasses][2]{};
    uint32_t actions[kRealScannerStates]{};

    constexpr void On(int state, std::initializer_list<Class> classes, int target) {
        for (Class c : classes) next[state][c][0] = static_cast<uint32_t>(target);
    }
    constexpr void OnDigits(int state, int target) { On(state, {kZero, kOne, kFive, kDigit}, target); }
    constexpr void OnOtherDigits(int state, int target) { On(state, {kOne, kFive, kDigit}, target); }
    constexpr void OnExponentLetter(int state, int target) { On(state, {kExponent, kQ}, target); }

    // The start and the mantissa up to the separator; the comma twins 42 to 46 share it.
    constexpr void Start(int start, int sign, int zeros, int one, int digits, Class separator) {
        On(start, {kBlank}, start);
        On(start, {kSign}, sign);
        On(start, {kZero}, zeros);
        On(start, {kOne}, one);
        On(start, {kFive, kDigit}, digits);
        On(start, {kN}, 6);
        On(start, {kI}, 7);
        On(start, {separator}, 8);
        OnExponentLetter(start, 9);
        On(sign, {kSign}, 11);
        On(sign, {kZero}, zeros);
        On(sign, {kOne}, one);
        On(sign, {kFive, kDigit}, digits);
        On(sign, {kN}, 6);
        On(sign, {kI}, 7);
        On(sign, {separator}, 8);
        OnExponentLetter(sign, 9);
        On(zeros, {kZero}, zeros);
        OnOtherDigits(zeros, digits);
        On(zeros, {separator}, 14);
        OnDigits(one, digits);
        On(one, {separator}, 15);
        OnDigits(digits, digits);
        On(digits, {separator}, 10);
        actions[start] = actions[sign] = actions[zeros] = kActionKnownValue;
        actions[one] = actions[digits] = kActionConvertLater;
    }

    // A known value n after the separator: the state with the exponent letter, its sign
    // state and its zero-exponent state.
    constexpr void KnownExponent(int letterState, int signState, int zeroState, uint32_t n) {
        On(letterState, {kSign}, signState);
        On(letterState, {kZero}, zeroState);
        OnOtherDigits(letterState, 30);
        On(signState, {kZero}, zeroState);
        OnOtherDigits(signState, 30);
        On(zeroState, {kZero}, zeroState);
        OnOtherDigits(zeroState, 30);
        actions[letterState] = actions[signState] = actions[zeroState] = kActionKnownValue + n;
    }

    constexpr Machine() {
        Start(1, 2, 3, 4, 5, kPoint);
        Start(42, 43, 44, 45, 46, kComma);
        On(6, {kA}, 49);
        On(7, {kN}, 55);
        actions[6] = actions[7] = kActionConvertLater;
        OnDigits(8, 12);
        OnExponentLetter(8, 9);
        actions[8] = kActionKnownValue;
        On(9, {kBlank}, 9);
        On(9, {kSign, kZero, kOne, kFive, kDigit}, 11);
        actions[9] = kActionKnownValue;
        OnDigits(10, 12);
        OnExponentLetter(10, 13);
        actions[10] = kActionConvertLater;
        On(11, {kBlank, kZero, kOne, kFive, kDigit}, 11);
        actions[11] = kActionKnownValue;
        OnDigits(12, 12);
        OnExponentLetter(12, 13);
        actions[12] = kActionConvert;
        On(13, {kSign}, 41);
        OnDigits(13, 30);
        actions[13] = kActionConvert;
        // "0." and "1." and the short constants that follow them.
        On(14, {kZero}, 16);
        On(14, {kOne}, 17);
        On(14, {kFive}, 18);
        On(14, {kDigit}, 12);
        OnExponentLetter(14, 19);
        actions[14] = kActionKnownValue + 0;
        On(15, {kZero}, 20);
        On(15, {kOne}, 21);
        On(15, {kFive}, 22);
        On(15, {kDigit}, 12);
        OnExponentLetter(15, 23);
        actions[15] = kActionKnownValue + 3;
        const struct {
            int state, letter;
            uint32_t n;
        } constants[] = {{16, 19, 0}, {17, 24, 1}, {18, 25, 2}, {20, 23, 3}, {21, 26, 4}, {22, 27, 5}};
        for (auto k : constants) {
            On(k.state, {kZero}, k.state);
            OnOtherDigits(k.state, 12);
            OnExponentLetter(k.state, k.letter);
            actions[k.state] = kActionKnownValue + k.n;
        }
        KnownExponent(19, 28, 29, 0);
        KnownExponent(23, 35, 36, 3);
        KnownExponent(24, 31, 32, 1);
        KnownExponent(25, 33, 34, 2);
        KnownExponent(26, 37, 38, 4);
        KnownExponent(27, 39, 40, 5);
        OnDigits(30, 30);
        OnDigits(41, 30);
        actions[30] = actions[41] = kActionConvert;
        // Not-a-number: NAN, NANQ, NANS, NAN(...), NaN(S...).
        On(49, {kN}, 50);
        actions[49] = kActionConvertLater;
        On(50, {kBlank, kQ}, 47);
        On(50, {kS}, 48);
        On(50, {kOpen}, 51);
        actions[50] = kActionKnownValue + 7;
        On(47, {kBlank}, 47);
        actions[47] = kActionKnownValue + 7;
        On(48, {kBlank}, 48);
        actions[48] = kActionKnownValue + 8;
        const Class word[] = {kZero, kOne, kFive, kDigit, kN, kI, kExponent, kQ, kA, kLetter, kF, kT, kY};
        for (Class c : word) {
            next[51][c][0] = 53;
            next[52][c][0] = 52;
            next[53][c][0] = 53;
        }
        On(51, {kS}, 52);
        On(52, {kS}, 52);
        On(53, {kS}, 53);
        On(51, {kClose}, 47);
        On(53, {kClose}, 47);
        On(52, {kClose}, 48);
        actions[51] = actions[52] = actions[53] = kActionConvertLater;
        // Infinity: INF completes, INFINITY completes, anything between does not.
        On(55, {kF}, 56);
        On(56, {kI}, 57);
        On(56, {kBlank}, 54);
        On(57, {kN}, 58);
        On(58, {kI}, 59);
        On(59, {kT}, 60);
        On(60, {kY}, 54);
        On(54, {kBlank}, 54);
        for (int state = 55; state <= 60; ++state) actions[state] = kActionConvertLater;
        actions[56] = actions[54] = kActionKnownValue + 6;
        actions[0] = kActionConvertLater;  // the dead state
    }
};

constexpr Machine kMachine{};
constexpr std::array<uint8_t, 256> kClasses = MakeClasses();

}  // namespace

const uint8_t _RFRCharClass[256] = {
#define VRN_ROW(i) kClasses[i], kClasses[i + 1], kClasses[i + 2], kClasses[i + 3]
#define VRN_ROW16(i) VRN_ROW(i), VRN_ROW(i + 4), VRN_ROW(i + 8), VRN_ROW(i + 12)
    VRN_ROW16(0),   VRN_ROW16(16),  VRN_ROW16(32),  VRN_ROW16(48),  VRN_ROW16(64),  VRN_ROW16(80),
    VRN_ROW16(96),  VRN_ROW16(112), VRN_ROW16(128), VRN_ROW16(144), VRN_ROW16(160), VRN_ROW16(176),
    VRN_ROW16(192), VRN_ROW16(208), VRN_ROW16(224), VRN_ROW16(240),
#undef VRN_ROW16
#undef VRN_ROW
};

// The tables are data that other layers index: copies of the machine built above.

const uint32_t _rfrscan_transition[kRealScannerStates][kScannerClasses][2] = {
#define VRN_CELL(s, c) {kMachine.next[s][c][0], 0}
#define VRN_STATE(s)                                                                                               \
    {VRN_CELL(s, 0),  VRN_CELL(s, 1),  VRN_CELL(s, 2),  VRN_CELL(s, 3),  VRN_CELL(s, 4),  VRN_CELL(s, 5),         \
     VRN_CELL(s, 6),  VRN_CELL(s, 7),  VRN_CELL(s, 8),  VRN_CELL(s, 9),  VRN_CELL(s, 10), VRN_CELL(s, 11),        \
     VRN_CELL(s, 12), VRN_CELL(s, 13), VRN_CELL(s, 14), VRN_CELL(s, 15), VRN_CELL(s, 16), VRN_CELL(s, 17),        \
     VRN_CELL(s, 18), VRN_CELL(s, 19), VRN_CELL(s, 20)}
    VRN_STATE(0),  VRN_STATE(1),  VRN_STATE(2),  VRN_STATE(3),  VRN_STATE(4),  VRN_STATE(5),  VRN_STATE(6),
    VRN_STATE(7),  VRN_STATE(8),  VRN_STATE(9),  VRN_STATE(10), VRN_STATE(11), VRN_STATE(12), VRN_STATE(13),
    VRN_STATE(14), VRN_STATE(15), VRN_STATE(16), VRN_STATE(17), VRN_STATE(18), VRN_STATE(19), VRN_STATE(20),
    VRN_STATE(21), VRN_STATE(22), VRN_STATE(23), VRN_STATE(24), VRN_STATE(25), VRN_STATE(26), VRN_STATE(27),
    VRN_STATE(28), VRN_STATE(29), VRN_STATE(30), VRN_STATE(31), VRN_STATE(32), VRN_STATE(33), VRN_STATE(34),
    VRN_STATE(35), VRN_STATE(36), VRN_STATE(37), VRN_STATE(38), VRN_STATE(39), VRN_STATE(40), VRN_STATE(41),
    VRN_STATE(42), VRN_STATE(43), VRN_STATE(44), VRN_STATE(45), VRN_STATE(46), VRN_STATE(47), VRN_STATE(48),
    VRN_STATE(49), VRN_STATE(50), VRN_STATE(51), VRN_STATE(52), VRN_STATE(53), VRN_STATE(54), VRN_STATE(55),
    VRN_STATE(56), VRN_STATE(57), VRN_STATE(58), VRN_STATE(59), VRN_STATE(60),
#undef VRN_STATE
#undef VRN_CELL
};

const uint32_t rfr_actions[kRealScannerStates] = {
#define VRN_ACTION(s) kMachine.actions[s]
    VRN_ACTION(0),  VRN_ACTION(1),  VRN_ACTION(2),  VRN_ACTION(3),  VRN_ACTION(4),  VRN_ACTION(5),  VRN_ACTION(6),
    VRN_ACTION(7),  VRN_ACTION(8),  VRN_ACTION(9),  VRN_ACTION(10), VRN_ACTION(11), VRN_ACTION(12), VRN_ACTION(13),
    VRN_ACTION(14), VRN_ACTION(15), VRN_ACTION(16), VRN_ACTION(17), VRN_ACTION(18), VRN_ACTION(19), VRN_ACTION(20),
    VRN_ACTION(21), VRN_ACTION(22), VRN_ACTION(23), VRN_ACTION(24), VRN_ACTION(25), VRN_ACTION(26), VRN_ACTION(27),
    VRN_ACTION(28), VRN_ACTION(29), VRN_ACTION(30), VRN_ACTION(31), VRN_ACTION(32), VRN_ACTION(33), VRN_ACTION(34),
    VRN_ACTION(35), VRN_ACTION(36), VRN_ACTION(37), VRN_ACTION(38), VRN_ACTION(39), VRN_ACTION(40), VRN_ACTION(41),
    VRN_ACTION(42), VRN_ACTION(43), VRN_ACTION(44), VRN_ACTION(45), VRN_ACTION(46), VRN_ACTION(47), VRN_ACTION(48),
    VRN_ACTION(49), VRN_ACTION(50), VRN_ACTION(51), VRN_ACTION(52), VRN_ACTION(53), VRN_ACTION(54), VRN_ACTION(55),
    VRN_ACTION(56), VRN_ACTION(57), VRN_ACTION(58), VRN_ACTION(59), VRN_ACTION(60),
#undef VRN_ACTION
};

// 0.0, 0.1, 0.5, 1.0, 1.1, 1.5, three unused, then the same negative (9 is the plain 0).
const float f_rfrval[18] = {0.0f, 0.1f, 0.5f, 1.0f, 1.1f, 1.5f, 0, 0, 0, 0.0f, -0.1f, -0.5f, -1.0f, -1.1f, -1.5f, 0, 0, 0};
const double d_rfrval[18] = {0.0, 0.1, 0.5, 1.0, 1.1, 1.5, 0, 0, 0, 0.0, -0.1, -0.5, -1.0, -1.1, -1.5, 0, 0, 0};
const DoubleDouble ld_rfrval[18] = {
    {0.0, 0.0}, {0.1, -5.551115123125783e-18}, {0.5, 0.0}, {1.0, 0.0}, {1.1, -8.881784197001253e-17}, {1.5, 0.0},
    {0, 0},     {0, 0},                         {0, 0},     {0.0, 0.0}, {-0.1, 5.551115123125783e-18},
    {-0.5, 0.0}, {-1.0, 0.0}, {-1.1, 8.881784197001253e-17}, {-1.5, 0.0}, {0, 0}, {0, 0}, {0, 0}};
// 0, infinity, quiet NaN, signalling NaN, and the three negative.
const uint32_t f_ieee_val[7] = {0, 0x7F800000u, 0x7FC00000u, 0x7F855555u, 0xFF800000u, 0xFFC00000u, 0xFF855555u};
const uint64_t d_ieee_val[7] = {0, 0x7FF0000000000000ull, 0x7FF8000000000000ull, 0x7FF5555555555555ull,
                                0xFFF0000000000000ull, 0xFFF8000000000000ull, 0xFFF5555555555555ull};
const uint64_t ld_ieee_val[7] = {0, 0x7FF0000000000000ull, 0x7FF8000000000000ull, 0x7FF5555555555555ull,
                                 0xFFF0000000000000ull, 0xFFF8000000000000ull, 0xFFF5555555555555ull};
