// TRANSFER (SOURCE, MOLD [, SIZE]): the bytes of SOURCE, taken in array element order,
// laid into the elements of a result of MOLD's type in the same order. A result longer
// than the source is filled up with zero bytes; a shorter one takes the first bytes.
#include <cstdlib>

#include "core/export.h"
#include "intrinsics/data_movement.h"

namespace {

// Walks the bytes of an array's elements in array element order.
class ByteCursor {
public:
    explicit ByteCursor(const Operand& array) : elements_(array), length_(array.length) {}
    // Up to `count` bytes into `to`; the count copied.
    int64_t Take(unsigned char* to, int64_t count, int64_t* left) {
        int64_t copied = 0;
        while (copied < count && *left > 0) {
            if (within_ == 0) current_ = elements_.Next();
            int64_t piece = length_ - within_;
            if (piece > count - copied) piece = count - copied;
            if (piece > *left) piece = *left;
            std::memcpy(to + copied, current_ + within_, static_cast<size_t>(piece));
            copied += piece;
            *left -= piece;
            within_ = (within_ + piece) % length_;
        }
        return copied;
    }

private:
    ElementCursor elements_;
    int64_t length_;
    int64_t within_ = 0;
    const unsigned char* current_ = nullptr;
};

void Transfer(ResultRecord* record, const void* sourceData, const void* mold, int32_t size, const RTDArray* sourceRtd,
              const RTDArray* moldRtd, int32_t hasSize) {
    if (!PrepareResult(record, [&](RTDArray* rtd) { return _vrtfsz(rtd, sourceRtd, moldRtd, size, hasSize); })) return;
    (void)mold;
    Operand out = ResultOperand(record);
    Operand source = Describe(sourceData, sourceRtd);
    unsigned char* result = Writable(out);
    int64_t sourceBytes = source.length > 0 ? ElementCount(source) * source.length : 0;
    const int64_t resultBytes = ElementCount(out) * out.length;
    if (Contiguous(out) && Contiguous(source)) {
        int64_t n = sourceBytes < resultBytes ? sourceBytes : resultBytes;
        std::memmove(result, source.data, static_cast<size_t>(n));
        std::memset(result + n, 0, static_cast<size_t>(resultBytes - n));
        return;
    }
    if (out.length <= 0) return;
    ByteCursor bytes(source);
    ElementCursor elements(out);
    for (int64_t e = 0, count = ElementCount(out); e < count; ++e) {
        auto* element = const_cast<unsigned char*>(elements.Next());
        int64_t copied = bytes.Take(element, out.length, &sourceBytes);
        std::memset(element + copied, 0, static_cast<size_t>(out.length - copied));
    }
}

}  // namespace

VRN_EXPORT void _vrtfi1(ResultRecord* result, const void* source, const void* mold, int32_t size,
                        const RTDArray* sourceRtd, const RTDArray* moldRtd, int32_t hasSize) {
    Transfer(result, source, mold, size, sourceRtd, moldRtd, hasSize);
}
