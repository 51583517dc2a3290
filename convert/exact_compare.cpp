// Big-integer comparison with a fixed capacity: both sides are brought to whole numbers
// by moving the powers of five and two to the side where they are positive, so that no
// division is needed. 32-bit limbs, so that the target needs no 128-bit type.
#include "convert/exact_compare.h"

namespace {

// 10^400 times 2^1200 would not fit, but the two never meet on one side: the larger side
// is at most about 1,100 bits (5^400 and a 100-bit mantissa, or 2^1200 and 64 bits).
constexpr int kLimbs = 48;

class FixedBigInt {
public:
    explicit FixedBigInt(uint64_t value) {
        limbs_[0] = static_cast<uint32_t>(value);
        limbs_[1] = static_cast<uint32_t>(value >> 32);
        used_ = limbs_[1] != 0 ? 2 : 1;
    }

    void MultiplyBy(uint32_t factor) {
        uint64_t carry = 0;
        for (int i = 0; i < used_; ++i) {
            uint64_t product = static_cast<uint64_t>(limbs_[i]) * factor + carry;
            limbs_[i] = static_cast<uint32_t>(product);
            carry = product >> 32;
        }
        if (carry != 0 && used_ < kLimbs) limbs_[used_++] = static_cast<uint32_t>(carry);
    }

    void Add(uint64_t value) {
        uint64_t carry = value;
        for (int i = 0; carry != 0 && i < kLimbs; ++i) {
            if (i == used_) limbs_[used_++] = 0;
            uint64_t sum = static_cast<uint64_t>(limbs_[i]) + static_cast<uint32_t>(carry);
            limbs_[i] = static_cast<uint32_t>(sum);
            carry = (carry >> 32) + (sum >> 32);
        }
    }

    void MultiplyByPowerOfFive(int exponent) {
        constexpr uint32_t kFiveTo13 = 1220703125u;
        for (; exponent >= 13; exponent -= 13) MultiplyBy(kFiveTo13);
        uint32_t rest = 1;
        for (; exponent > 0; --exponent) rest *= 5;
        MultiplyBy(rest);
    }

    void ShiftLeft(int bits) {
        int words = bits / 32;
        int shift = bits % 32;
        if (words > 0) {
            for (int i = used_ - 1; i >= 0; --i) {
                if (i + words < kLimbs) limbs_[i + words] = limbs_[i];
            }
            for (int i = 0; i < words && i < kLimbs; ++i) limbs_[i] = 0;
            used_ = used_ + words < kLimbs ? used_ + words : kLimbs;
        }
        if (shift > 0) {
            uint32_t carry = 0;
            for (int i = words; i < used_; ++i) {
                uint32_t next = limbs_[i] >> (32 - shift);
                limbs_[i] = (limbs_[i] << shift) | carry;
                carry = next;
            }
            if (carry != 0 && used_ < kLimbs) limbs_[used_++] = carry;
        }
    }

    friend int Compare(const FixedBigInt& a, const FixedBigInt& b) {
        int used = a.used_ > b.used_ ? a.used_ : b.used_;
        for (int i = used - 1; i >= 0; --i) {
            uint32_t x = i < a.used_ ? a.limbs_[i] : 0;
            uint32_t y = i < b.used_ ? b.limbs_[i] : 0;
            if (x != y) return x < y ? -1 : 1;
        }
        return 0;
    }

private:
    uint32_t limbs_[kLimbs] = {};
    int used_;
};

}  // namespace

int CompareDecimalWithBinary(DecimalMantissa mantissa, int decimalExponent, uint64_t binaryMantissa,
                             int binaryExponent) {
    FixedBigInt decimal(mantissa.high);
    for (int i = 0; i < mantissa.lowDigits; ++i) decimal.MultiplyBy(10);
    decimal.Add(mantissa.low);
    FixedBigInt binary(binaryMantissa);
    // d 10^E vs b 2^P  <=>  d 5^E 2^E vs b 2^P: fives to the side where they multiply,
    // then the difference of the powers of two to the smaller side.
    if (decimalExponent >= 0) {
        decimal.MultiplyByPowerOfFive(decimalExponent);
    } else {
        binary.MultiplyByPowerOfFive(-decimalExponent);
    }
    int twos = decimalExponent - binaryExponent;
    if (twos >= 0) {
        decimal.ShiftLeft(twos);
    } else {
        binary.ShiftLeft(-twos);
    }
    return Compare(decimal, binary);
}
