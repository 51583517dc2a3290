// The G rules for a real value: E editing stays, or F editing with the digits that the
// value's magnitude leaves, and blanks where the exponent would have stood.
//
// The decisions compare the magnitude with powers of ten less half a unit of the last
// digit shown (Fortran 90 and later), or with the powers alone (Fortran 77). A 16-byte
// value is compared as a pair of doubles, so that a value just below a boundary is not
// rounded onto it.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "convert/convert.h"
#include "convert/double_double.h"
#include "format/format_control.h"
#include "vrn90.h"

namespace {

constexpr int kPowers = 310;     // 10^0 to 10^308, then infinity
constexpr int kRoundings = 311;  // 0.5 times 10^0 to 10^-310
constexpr int32_t kLargestLookup = 309;

struct GTables {
    double d_powtab[kPowers];
    double d_rndtab[kRoundings];
    DoubleDouble ld_powtab[kPowers];
    DoubleDouble ld_rndtab[kRoundings];
    bool ready;
};

// Built on first use from the conversion's exact powers of ten; the I/O layers run one
// statement at a time, so no lock guards the filling.
GTables tables;

const GTables& Tables() {
    if (!tables.ready) {
        for (int k = 0; k < kPowers; ++k) {
            DoubleDouble power = k < kPowers - 1 ? pwr10(k) : DoubleDouble{std::numeric_limits<double>::infinity(), 0.0};
            tables.ld_powtab[k] = power;
            tables.d_powtab[k] = power.hi;
        }
        for (int k = 0; k < kRoundings; ++k) {
            DoubleDouble tenth = pwr10(-k);
            tables.ld_rndtab[k] = DoubleDouble{tenth.hi * 0.5, tenth.lo * 0.5};
            tables.d_rndtab[k] = tenth.hi * 0.5;
        }
        tables.ready = true;
    }
    return tables;
}

// A magnitude as both forms: the double, and the pair for 16-byte values.
struct Magnitude {
    bool pair;
    double value;
    DoubleDouble wide;
    bool finite;
    bool zero;
};

Magnitude MagnitudeOf(int32_t size, const void* item) {
    Magnitude m{false, 0.0, {0.0, 0.0}, true, false};
    if (size == 16) {
        m.pair = true;
        std::memcpy(&m.wide, item, sizeof m.wide);
        if (std::signbit(m.wide.hi)) m.wide = Negate(m.wide);
        m.finite = std::isfinite(m.wide.hi) && std::isfinite(m.wide.lo);
        m.zero = m.wide.hi == 0 && m.wide.lo == 0;
        return m;
    }
    if (size == 4) {
        float single;
        std::memcpy(&single, item, sizeof single);
        m.value = std::fabs(static_cast<double>(single));
    } else {
        std::memcpy(&m.value, item, sizeof m.value);
        m.value = std::fabs(m.value);
    }
    m.finite = std::isfinite(m.value);
    m.zero = m.value == 0;
    return m;
}

bool Below(const DoubleDouble& a, const DoubleDouble& b) { return a.hi < b.hi || (a.hi == b.hi && a.lo < b.lo); }

// Is the magnitude below 10^power less `rounding` (the index of a half unit), or below
// 10^power alone when rounding is negative?
bool BelowThreshold(const Magnitude& m, int power, int rounding) {
    const GTables& t = Tables();
    if (!m.pair) {
        double threshold = t.d_powtab[power] - (rounding >= 0 ? t.d_rndtab[rounding] : 0.0);
        return m.value < threshold;
    }
    DoubleDouble threshold = t.ld_powtab[power];
    if (rounding >= 0 && std::isfinite(threshold.hi)) threshold = Add(threshold, Negate(t.ld_rndtab[rounding]));
    return Below(m.wide, threshold);
}

bool BelowTenth(const Magnitude& m, int rounding) {
    const GTables& t = Tables();
    if (!m.pair) return m.value < 0.1 - (rounding >= 0 ? t.d_rndtab[rounding] : 0.0);
    DoubleDouble tenth{0.1, -5.551115123125783e-18};
    if (rounding >= 0) tenth = Add(tenth, Negate(t.ld_rndtab[rounding]));
    return Below(m.wide, tenth);
}

void BecomeF(FormatState* state, int32_t digitsLost, int32_t blanks) {
    state->desc = VRN_FMT_F;
    state->w -= blanks;
    state->d -= digitsLost;
    state->scale = 0;
    state->trailingBlanks = blanks;
}

// The binary search for the number of digits in front of the point: the largest k with
// the magnitude at or above the threshold of 10^k.
int32_t DigitsInFront(const Magnitude& m, int32_t d, bool rounded) {
    int32_t lookup = d > kLargestLookup ? kLargestLookup : d;
    int32_t lo = -1;
    int32_t hi = lookup;
    while (hi - lo > 1) {
        int32_t mid = (lo + hi) / 2;
        if (BelowThreshold(m, mid, rounded ? lookup - mid : -1)) hi = mid;
        else lo = mid;
    }
    return lo;
}

int32_t TrailingBlanks(const FormatState* state, int32_t operandCount) { return operandCount < 3 ? 4 : state->e + 2; }

}  // namespace

void ApplyF77Rules(FormatState* state, int32_t operandCount, int32_t size, const void* item) {
    if (size != 4 && size != 8 && size != 16) return;
    Magnitude m = MagnitudeOf(size, item);
    if (!m.finite || m.zero) return;
    int32_t d = state->d;
    int32_t lookup = d > kLargestLookup ? kLargestLookup : d;
    if (BelowTenth(m, -1) || !BelowThreshold(m, lookup, -1)) return;
    int32_t lo = DigitsInFront(m, d, false);
    BecomeF(state, lo + 1, TrailingBlanks(state, operandCount));
}

void ApplyF90Rules(FormatState* state, int32_t operandCount, int32_t size, const void* item) {
    if (size != 4 && size != 8 && size != 16) return;
    Magnitude m = MagnitudeOf(size, item);
    if (!m.finite) return;
    int32_t d = state->d;
    int32_t blanks = TrailingBlanks(state, operandCount);
    if (m.zero) {
        if (d != 0) BecomeF(state, 1, blanks);
        return;
    }
    int32_t lookup = d > kLargestLookup ? kLargestLookup : d;
    if (BelowTenth(m, lookup + 1) || !BelowThreshold(m, lookup, 0)) return;
    int32_t lo = DigitsInFront(m, d, true);
    BecomeF(state, lo + 1, blanks);
}
