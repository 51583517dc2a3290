// An independent truth for decimal conversion: the exact decimal expansion of a double
// (or of a sum of two) with big-integer arithmetic, and its rounding to a number of
// digits by the textbook rules.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace exact {

// A non-negative integer in base 10^9, least significant limb first.
class BigInt {
public:
    explicit BigInt(uint64_t value = 0) {
        while (value > 0) {
            limbs_.push_back(static_cast<uint32_t>(value % kBase));
            value /= kBase;
        }
    }
    void MultiplyBy(uint32_t factor) {
        uint64_t carry = 0;
        for (uint32_t& limb : limbs_) {
            uint64_t product = static_cast<uint64_t>(limb) * factor + carry;
            limb = static_cast<uint32_t>(product % kBase);
            carry = product / kBase;
        }
        while (carry > 0) {
            limbs_.push_back(static_cast<uint32_t>(carry % kBase));
            carry /= kBase;
        }
    }
    void MultiplyByPower(uint32_t base, int exponent) {
        for (; exponent >= 13 && base == 5; exponent -= 13) MultiplyBy(1220703125u);  // 5^13
        for (; exponent >= 30 && base == 2; exponent -= 30) MultiplyBy(1u << 30);
        for (; exponent > 0; --exponent) MultiplyBy(base);
    }
    void Add(const BigInt& other) {
        uint64_t carry = 0;
        for (size_t i = 0; i < other.limbs_.size() || carry; ++i) {
            if (i == limbs_.size()) limbs_.push_back(0);
            uint64_t sum = limbs_[i] + carry + (i < other.limbs_.size() ? other.limbs_[i] : 0);
            limbs_[i] = static_cast<uint32_t>(sum % kBase);
            carry = sum / kBase;
        }
    }
    // this - other, when this >= other.
    void Subtract(const BigInt& other) {
        int64_t borrow = 0;
        for (size_t i = 0; i < limbs_.size(); ++i) {
            int64_t difference = static_cast<int64_t>(limbs_[i]) - borrow - (i < other.limbs_.size() ? other.limbs_[i] : 0);
            borrow = difference < 0;
            limbs_[i] = static_cast<uint32_t>(difference + (borrow ? kBase : 0));
        }
        while (!limbs_.empty() && limbs_.back() == 0) limbs_.pop_back();
    }
    bool Less(const BigInt& other) const {
        if (limbs_.size() != other.limbs_.size()) return limbs_.size() < other.limbs_.size();
        for (size_t i = limbs_.size(); i-- > 0;) {
            if (limbs_[i] != other.limbs_[i]) return limbs_[i] < other.limbs_[i];
        }
        return false;
    }
    std::string ToString() const {
        if (limbs_.empty()) return "0";
        std::string text = std::to_string(limbs_.back());
        for (size_t i = limbs_.size() - 1; i-- > 0;) {
            std::string part = std::to_string(limbs_[i]);
            text += std::string(9 - part.size(), '0') + part;
        }
        return text;
    }

private:
    static constexpr uint64_t kBase = 1000000000;
    std::vector<uint32_t> limbs_;
};

// A positive number as its significant digits (no leading or trailing zeros) and the
// position of the decimal point from the first digit: 0.digits times 10^point.
struct Decimal {
    std::string digits;
    int point = 0;
};

inline Decimal FromScaledInteger(const BigInt& integer, int powerOfTen) {
    Decimal d;
    d.digits = integer.ToString();
    d.point = static_cast<int>(d.digits.size()) + powerOfTen;
    while (d.digits.size() > 1 && d.digits.back() == '0') d.digits.pop_back();
    return d;
}

// m 2^e with m a whole number.
struct Binary {
    uint64_t mantissa;
    int exponent;
};

inline Binary Decompose(double value) {
    int exponent;
    double fraction = std::frexp(std::fabs(value), &exponent);
    return {static_cast<uint64_t>(std::ldexp(fraction, 53)), exponent - 53};
}

// m 2^e as m 2^(e - low) times 2^low, for adding two values on one scale.
inline BigInt OnScale(Binary b, int low) {
    BigInt integer(b.mantissa);
    integer.MultiplyByPower(2, b.exponent - low);
    return integer;
}

inline Decimal FromBinary(const BigInt& integerAtScale, int scale) {
    BigInt n = integerAtScale;
    if (scale >= 0) {
        n.MultiplyByPower(2, scale);
        return FromScaledInteger(n, 0);
    }
    n.MultiplyByPower(5, -scale);  // m 2^-k = m 5^k 10^-k
    return FromScaledInteger(n, scale);
}

// The exact decimal value of a finite, non-zero double's magnitude.
inline Decimal Of(double value) {
    Binary b = Decompose(value);
    return FromBinary(BigInt(b.mantissa), b.exponent);
}

// The exact decimal value of |high + low| for a normalised pair.
inline Decimal OfPair(double high, double low) {
    if (low == 0) return Of(high);
    Binary h = Decompose(high);
    Binary l = Decompose(low);
    int scale = h.exponent < l.exponent ? h.exponent : l.exponent;
    BigInt sum = OnScale(h, scale);
    BigInt part = OnScale(l, scale);
    if ((high < 0) == (low < 0)) sum.Add(part); else sum.Subtract(part);
    return FromBinary(sum, scale);
}

enum class Mode { Nearest, Zero, Up, Down, Compatible };

// The decimal rounded to `count` digits from its first (count may be 0 or negative: the
// digits then start to the right of the first one). The result has exactly max(count, 0)
// digits, or one more "1" in front after a carry, folded into the point.
inline Decimal Round(const Decimal& d, int count, Mode mode, bool negative) {
    std::string head;
    std::string rest;
    if (count <= 0) {
        rest = std::string(static_cast<size_t>(-count), '0') + d.digits;
    } else {
        head = d.digits.substr(0, static_cast<size_t>(count));
        head.resize(static_cast<size_t>(count), '0');
        if (d.digits.size() > static_cast<size_t>(count)) rest = d.digits.substr(static_cast<size_t>(count));
    }
    bool inexact = rest.find_first_not_of('0') != std::string::npos;
    int versusHalf = 0;  // below -1, equal 0, above 1
    if (!rest.empty()) {
        if (rest[0] != '5') {
            versusHalf = rest[0] > '5' ? 1 : -1;
        } else {
            versusHalf = rest.find_first_not_of('0', 1) != std::string::npos ? 1 : 0;
        }
    }
    bool odd = !head.empty() && ((head.back() - '0') % 2 == 1);
    bool up = false;
    if (inexact) {
        switch (mode) {
        case Mode::Nearest: up = versusHalf > 0 || (versusHalf == 0 && odd); break;
        case Mode::Zero: up = false; break;
        case Mode::Up: up = !negative; break;
        case Mode::Down: up = negative; break;
        case Mode::Compatible: up = versusHalf >= 0; break;
        }
    }
    Decimal result{head, d.point};
    if (up) {
        int i = static_cast<int>(head.size()) - 1;
        while (i >= 0 && result.digits[static_cast<size_t>(i)] == '9') result.digits[static_cast<size_t>(i--)] = '0';
        if (i >= 0) {
            result.digits[static_cast<size_t>(i)]++;
        } else {
            // All nines, or nothing in front: one more digit, "1" and zeros.
            result.digits = "1" + result.digits;
            if (count > 0) result.digits.pop_back();
            result.point += 1;
            if (count <= 0) result.point = d.point - count + 1;
        }
    }
    return result;
}

}  // namespace exact
