// CSHIFT, EOSHIFT, TRANSPOSE, RESHAPE, SPREAD, PACK, UNPACK, MERGE and TRANSFER against
// references that follow the standard's definitions element by element, over every element
// width, random shapes of ranks 1 to 7 and 20, sections with negative and zero strides,
// optional arguments present and absent, scalars where Fortran allows them, and results
// into caller storage that is itself a section.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/intrinsics/arrays.h"

namespace {

using Tuple = std::vector<int32_t>;

// An array argument: a random section of random bytes.
struct Operand {
    Section section;
    int32_t width = 1;
    uint8_t type = RTD_TYPE_INTEGER;
    std::vector<unsigned char> bytes;
    bool scalar = false;

    Operand() = default;
    Operand(const std::vector<int32_t>& extents, int32_t elementWidth, uint8_t dataType, std::mt19937& random,
            bool asScalar = false)
        : width(elementWidth), type(dataType), scalar(asScalar) {
        section = asScalar ? Section{{}, {}, 0, 1} : RandomSection(extents, random);
        bytes.resize(static_cast<size_t>(section.span * width));
        for (auto& b : bytes) b = static_cast<unsigned char>(random());
    }
    const unsigned char* At(const Tuple& index) const {
        return bytes.data() + (scalar ? 0 : section.Offset(index)) * width;
    }
    const void* data() const { return bytes.data() + section.first * width; }
    std::vector<unsigned char> Element(const Tuple& index) const { return {At(index), At(index) + width}; }
    int64_t Size() const {
        int64_t size = 1;
        for (int32_t e : section.extents) size *= std::max(e, 0);
        return size;
    }
};

// The RTD of an operand, a scalar one when the operand is.
struct Descriptor {
    Array array;
    explicit Descriptor(const Operand& operand)
        : array(operand.section.extents, operand.width, operand.type, operand.section.strides) {
        if (operand.scalar) array.rtd->header.dscr_type = operand.type == RTD_TYPE_CHARACTER ? RTD_SCALAR_CHAR : RTD_SCALAR;
    }
    const RTDArray* rtd() const { return array.rtd; }
};

std::vector<Tuple> Tuples(const std::vector<int32_t>& extents) {
    std::vector<Tuple> all;
    ForEachIndex(extents, [&](const Tuple& index) { all.push_back(index); });
    return all;
}

// The result as a byte string in array element order, whatever its strides; the memory
// the library allocated is freed.
std::vector<unsigned char> ResultBytes(ResultRecord& record, const void* callerBase = nullptr) {
    std::vector<unsigned char> out;
    if (record.base_ptr == 0) return out;
    int32_t width = record.element_len;
    std::vector<int32_t> extents;
    std::vector<int32_t> multipliers;
    for (int32_t d = record.rank - 1; d >= 0; --d) {
        extents.push_back(record.dims[d].extent);
        multipliers.push_back(record.dims[d].multiplier);
    }
    auto* base = reinterpret_cast<const unsigned char*>(record.base_ptr);
    ForEachIndex(extents, [&](const Tuple& index) {
        int64_t offset = 0;
        for (size_t d = 0; d < index.size(); ++d) offset += int64_t{index[d]} * multipliers[d];
        out.insert(out.end(), base + offset, base + offset + width);
    });
    if (callerBase == nullptr) std::free(reinterpret_cast<void*>(record.base_ptr));
    return out;
}

// Caller storage for a result of `extents`: every other element of a buffer, or reversed.
struct CallerResult {
    std::vector<unsigned char> storage;
    ResultRecord record{};
    CallerResult(const std::vector<int32_t>& extents, int32_t width, uint8_t type, bool reversed) {
        int64_t size = 1;
        for (int32_t e : extents) size *= std::max(e, 0);
        storage.assign(static_cast<size_t>(std::max<int64_t>(2 * size, 1) * width), 0xEE);
        std::vector<int32_t> strides;
        int32_t running = reversed ? -1 : 2;
        for (int32_t e : extents) {
            strides.push_back(running);
            running *= std::max(e, 1);
        }
        Array rtd(extents, width, type, strides);
        std::memcpy(&record.rtd_base_ptr, rtd.rtd, sizeof(RTDArray) + extents.size() * sizeof(RTDDimension));
        int64_t first = reversed ? size - 1 : 0;
        record.base_ptr = reinterpret_cast<uintptr_t>(storage.data() + first * width);
    }
};

struct Entries {
    int32_t width;
    uint8_t type;
    const char* name;
    decltype(&_vrcsi1) cshift;
    decltype(&_vresi1g) eoshift;
    decltype(&_vrtsi1) transpose;
    decltype(&_vrrsi1g) reshape;
    decltype(&_vrspi1) spread;
    decltype(&_vrpki1g) pack;
    decltype(&_vrupi1) unpack;
    decltype(&_vrmri1) merge;
};

const Entries kEntries[] = {
    {3, RTD_TYPE_CHARACTER, "c", _vrcsc, _vrescg, _vrtsc, _vrrscg, _vrspc, _vrpkcg, _vrupc, _vrmrc},
    {1, RTD_TYPE_INTEGER, "i1", _vrcsi1, _vresi1g, _vrtsi1, _vrrsi1g, _vrspi1, _vrpki1g, _vrupi1, _vrmri1},
    {2, RTD_TYPE_LOGICAL, "l2", _vrcsl2, _vresl2g, _vrtsl2, _vrrsl2g, _vrspl2, _vrpkl2g, _vrupl2, _vrmrl2},
    {4, RTD_TYPE_REAL, "r4", _vrcsr4, _vresr4g, _vrtsr4, _vrrsr4g, _vrspr4, _vrpkr4g, _vrupr4, _vrmrr4},
    {8, RTD_TYPE_INTEGER, "i8", _vrcsi8, _vresi8g, _vrtsi8, _vrrsi8g, _vrspi8, _vrpki8g, _vrupi8, _vrmri8},
    {16, RTD_TYPE_REAL, "r16", _vrcsr16, _vresr16g, _vrtsr16, _vrrsr16g, _vrspr16, _vrpkr16g, _vrupr16, _vrmrr16},
    {32, RTD_TYPE_COMPLEX, "x32", _vrcsx32, _vresx32g, _vrtsx32, _vrrsx32g, _vrspx32, _vrpkx32g, _vrupx32,
     _vrmrx32},
};

std::vector<int32_t> ShapeFor(std::mt19937& random) {
    static const size_t ranks[] = {1, 1, 2, 2, 3, 7, 20};
    size_t rank = ranks[random() % 7];
    return RandomExtents(rank, random);
}

// A logical of random kind whose truth is random and whose other bits are noise.
Operand RandomMask(const std::vector<int32_t>& extents, std::mt19937& random, bool scalar = false) {
    Operand mask(extents, 1 << (random() % 4), RTD_TYPE_LOGICAL, random, scalar);
    return mask;
}
bool Truth(const Operand& mask, const Tuple& index) {
    return IsTrue(mask.At(index), mask.width);
}

// An INTEGER operand of random kind holding small values.
Operand Integers(const std::vector<int32_t>& extents, std::mt19937& random, int64_t low, int64_t high, bool scalar) {
    Operand op(extents, 1 << (random() % 4), RTD_TYPE_INTEGER, random, scalar);
    for (size_t i = 0; i + op.width <= op.bytes.size(); i += op.width) {
        StoreInteger(op.bytes.data() + i, op.width, static_cast<uint64_t>(low + static_cast<int64_t>(random() % (high - low + 1))));
    }
    return op;
}
int64_t IntegerAt(const Operand& op, const Tuple& index) { return LoadInteger(op.At(index), op.width); }

Tuple Without(const Tuple& index, size_t axis) {
    Tuple rest;
    for (size_t d = 0; d < index.size(); ++d) {
        if (d != axis) rest.push_back(index[d]);
    }
    return rest;
}

std::vector<int32_t> Extents(const std::vector<int32_t>& extents, size_t axis) { return Without(extents, axis); }

class DataMovement : public ::testing::Test {
protected:
    std::mt19937 random{34};
    // Where the result goes: allocated by the library, or a caller's section.
    int placement() { return static_cast<int>(random() % 3); }
};

TEST_F(DataMovement, CshiftAndEoshiftMoveEveryLineByItsShift) {
    for (int trial = 0; trial < 150; ++trial) {
        for (const Entries& e : kEntries) {
            std::vector<int32_t> extents = ShapeFor(random);
            size_t rank = extents.size();
            Operand array(extents, e.width, e.type, random);
            size_t axis = random() % rank;
            bool hasDim = axis != 0 || random() % 2;
            int32_t n = extents[axis];
            bool scalarShift = random() % 2;
            Operand shift = Integers(Extents(extents, axis), random, -2 * n - 1, 2 * n + 1, scalarShift);
            int boundaryMode = static_cast<int>(random() % 3);  // 0 absent, 1 scalar, 2 array
            Operand boundary(Extents(extents, axis), e.width, e.type, random, boundaryMode == 1);
            Descriptor a(array), s(shift), b(boundary);
            for (bool end : {false, true}) {
                std::vector<unsigned char> expected;
                for (const Tuple& index : Tuples(extents)) {
                    Tuple others = Without(index, axis);
                    int64_t k = IntegerAt(shift, others);
                    Tuple from = index;
                    int64_t source = index[axis] + k;
                    std::vector<unsigned char> element;
                    if (!end) {
                        from[axis] = static_cast<int32_t>(((source % n) + n) % n);
                        element = array.Element(from);
                    } else if (source >= 0 && source < n) {
                        from[axis] = static_cast<int32_t>(source);
                        element = array.Element(from);
                    } else if (boundaryMode != 0) {
                        element = boundary.Element(others);
                    } else {
                        element.assign(static_cast<size_t>(e.width), e.type == RTD_TYPE_CHARACTER ? ' ' : 0);
                    }
                    expected.insert(expected.end(), element.begin(), element.end());
                }
                int where = placement();
                CallerResult caller(extents, e.width, e.type, where == 2);
                ResultRecord own = Unallocated();
                ResultRecord* record = where ? &caller.record : &own;
                int32_t dim = static_cast<int32_t>(axis) + 1;
                if (end) {
                    e.eoshift(record, array.data(), shift.data(), boundary.data(), dim, a.rtd(), s.rtd(), b.rtd(),
                              boundaryMode != 0, hasDim);
                } else {
                    e.cshift(record, array.data(), shift.data(), dim, a.rtd(), s.rtd(), hasDim);
                }
                std::vector<unsigned char> got = ResultBytes(*record, where ? caller.storage.data() : nullptr);
                ASSERT_EQ(got, expected) << (end ? "eoshift " : "cshift ") << e.name << " rank " << rank << " dim "
                                         << dim << " boundary " << boundaryMode;
            }
        }
    }
}

TEST_F(DataMovement, TransposeSpreadAndMergeFollowTheirDefinitions) {
    for (int trial = 0; trial < 150; ++trial) {
        for (const Entries& e : kEntries) {
            // TRANSPOSE of a matrix, some of them larger than a tile.
            std::vector<int32_t> sides = {static_cast<int32_t>(random() % 70), static_cast<int32_t>(random() % 40)};
            Operand matrix(sides, e.width, e.type, random);
            Descriptor m(matrix);
            std::vector<unsigned char> expected;
            for (const Tuple& index : Tuples({sides[1], sides[0]})) {
                auto element = matrix.Element({index[1], index[0]});
                expected.insert(expected.end(), element.begin(), element.end());
            }
            int where = placement();
            CallerResult caller({sides[1], sides[0]}, e.width, e.type, where == 2);
            ResultRecord own = Unallocated();
            ResultRecord* record = where ? &caller.record : &own;
            e.transpose(record, matrix.data(), m.rtd());
            ASSERT_EQ(ResultBytes(*record, where ? caller.storage.data() : nullptr), expected) << "transpose " << e.name;

            // SPREAD of an array or a scalar.
            std::vector<int32_t> extents = random() % 5 == 0 ? std::vector<int32_t>{} : ShapeFor(random);
            if (extents.size() == 20) extents.pop_back();
            Operand source(extents, e.width, e.type, random, extents.empty());
            Descriptor sd(source);
            size_t axis = random() % (extents.size() + 1);
            int32_t ncopies = static_cast<int32_t>(random() % 5) - 1;
            std::vector<int32_t> spread = extents;
            spread.insert(spread.begin() + static_cast<ptrdiff_t>(axis), std::max(ncopies, 0));
            expected.clear();
            for (const Tuple& index : Tuples(spread)) {
                auto element = source.Element(Without(index, axis));
                expected.insert(expected.end(), element.begin(), element.end());
            }
            own = Unallocated();
            e.spread(&own, source.data(), static_cast<int32_t>(axis) + 1, ncopies, sd.rtd());
            ASSERT_EQ(ResultBytes(own), expected) << "spread " << e.name << " rank " << extents.size();

            // MERGE with any of its three operands a scalar.
            std::vector<int32_t> shape = ShapeFor(random);
            int scalars = static_cast<int>(random() % 8);
            Operand t(shape, e.width, e.type, random, scalars & 1), f(shape, e.width, e.type, random, scalars & 2);
            Operand mask = RandomMask(shape, random, scalars & 4);
            Descriptor td(t), fd(f), md(mask);
            bool scalarResult = scalars == 7;
            expected.clear();
            for (const Tuple& index : Tuples(scalarResult ? std::vector<int32_t>{} : shape)) {
                auto element = Truth(mask, index) ? t.Element(index) : f.Element(index);
                expected.insert(expected.end(), element.begin(), element.end());
            }
            own = Unallocated();
            e.merge(&own, t.data(), f.data(), mask.data(), td.rtd(), fd.rtd(), md.rtd());
            ASSERT_EQ(ResultBytes(own), expected) << "merge " << e.name << " scalars " << scalars;
        }
    }
}

TEST_F(DataMovement, ReshapeFillsThePermutedOrderFromSourceThenPad) {
    for (int trial = 0; trial < 150; ++trial) {
        for (const Entries& e : kEntries) {
            std::vector<int32_t> extents = ShapeFor(random);
            Operand source(extents, e.width, e.type, random);
            std::vector<int32_t> shape(1 + random() % 4);
            for (auto& s : shape) s = static_cast<int32_t>(random() % 4);
            int64_t size = 1;
            for (int32_t s : shape) size *= s;
            bool hasPad = source.Size() < size || random() % 2;
            Operand pad({1 + static_cast<int32_t>(random() % 3)}, e.width, e.type, random);
            bool hasOrder = random() % 2;
            std::vector<int32_t> order(shape.size());
            for (size_t d = 0; d < order.size(); ++d) order[d] = static_cast<int32_t>(d) + 1;
            if (hasOrder) std::shuffle(order.begin(), order.end(), random);
            // SHAPE and ORDER as INTEGER(8) and INTEGER(2) vectors.
            std::vector<int64_t> shapeData(shape.begin(), shape.end());
            std::vector<int16_t> orderData(order.begin(), order.end());
            Array shapeRtd({static_cast<int32_t>(shape.size())}, 8, RTD_TYPE_INTEGER);
            Array orderRtd({static_cast<int32_t>(order.size())}, 2, RTD_TYPE_INTEGER);
            Descriptor sd(source), pd(pad);

            // The reference walks the result's subscripts with ORDER(1) fastest.
            std::vector<std::vector<unsigned char>> result(static_cast<size_t>(size));
            std::vector<int32_t> permuted;
            for (int32_t o : order) permuted.push_back(shape[static_cast<size_t>(o - 1)]);
            std::vector<Tuple> sourceTuples = Tuples(extents), padTuples = Tuples(pad.section.extents);
            size_t next = 0;
            for (const Tuple& p : Tuples(permuted)) {
                Tuple index(shape.size());
                for (size_t d = 0; d < order.size(); ++d) index[static_cast<size_t>(order[d] - 1)] = p[d];
                size_t linear = 0, scale = 1;
                for (size_t d = 0; d < index.size(); ++d) {
                    linear += static_cast<size_t>(index[d]) * scale;
                    scale *= static_cast<size_t>(shape[d]);
                }
                result[linear] = next < sourceTuples.size() ? source.Element(sourceTuples[next])
                                                            : pad.Element(padTuples[(next - sourceTuples.size()) % padTuples.size()]);
                ++next;
            }
            std::vector<unsigned char> expected;
            for (const auto& element : result) expected.insert(expected.end(), element.begin(), element.end());
            ResultRecord own = Unallocated();
            e.reshape(&own, source.data(), shapeData.data(), pad.data(), orderData.data(), sd.rtd(), shapeRtd.rtd,
                      pd.rtd(), orderRtd.rtd, hasPad, hasOrder);
            ASSERT_EQ(ResultBytes(own), expected) << "reshape " << e.name;
        }
    }
}

TEST_F(DataMovement, PackAndUnpackFollowTheMask) {
    for (int trial = 0; trial < 150; ++trial) {
        for (const Entries& e : kEntries) {
            std::vector<int32_t> extents = ShapeFor(random);
            Operand array(extents, e.width, e.type, random);
            bool scalarMask = random() % 5 == 0;
            Operand mask = RandomMask(extents, random, scalarMask);
            std::vector<unsigned char> packed;
            int64_t count = 0;
            for (const Tuple& index : Tuples(extents)) {
                if (!Truth(mask, index)) continue;
                auto element = array.Element(index);
                packed.insert(packed.end(), element.begin(), element.end());
                ++count;
            }
            bool hasVector = random() % 2;
            Operand vector({static_cast<int32_t>(count + random() % 3)}, e.width, e.type, random);
            std::vector<unsigned char> expected = packed;
            if (hasVector) {
                for (int64_t i = count; i < vector.section.extents[0]; ++i) {
                    auto element = vector.Element({static_cast<int32_t>(i)});
                    expected.insert(expected.end(), element.begin(), element.end());
                }
            }
            Descriptor ad(array), md(mask), vd(vector);
            ResultRecord own = Unallocated();
            e.pack(&own, array.data(), mask.data(), vector.data(), ad.rtd(), md.rtd(), vd.rtd(), hasVector);
            ASSERT_EQ(ResultBytes(own), expected) << "pack " << e.name << " rank " << extents.size();

            // UNPACK into the mask's shape, FIELD a scalar or an array.
            Operand arrayMask = RandomMask(extents, random);
            bool scalarField = random() % 2;
            Operand field(extents, e.width, e.type, random, scalarField);
            int64_t trues = 0;
            for (const Tuple& index : Tuples(extents)) trues += Truth(arrayMask, index);
            Operand values({static_cast<int32_t>(trues + random() % 2)}, e.width, e.type, random);
            expected.clear();
            int32_t taken = 0;
            for (const Tuple& index : Tuples(extents)) {
                auto element = Truth(arrayMask, index) ? values.Element({taken++}) : field.Element(index);
                expected.insert(expected.end(), element.begin(), element.end());
            }
            Descriptor um(arrayMask), fd(field), uv(values);
            int where = placement();
            CallerResult caller(extents, e.width, e.type, where == 2);
            ResultRecord unpackOwn = Unallocated();
            ResultRecord* record = where ? &caller.record : &unpackOwn;
            e.unpack(record, values.data(), arrayMask.data(), field.data(), uv.rtd(), um.rtd(), fd.rtd());
            ASSERT_EQ(ResultBytes(*record, where ? caller.storage.data() : nullptr), expected) << "unpack " << e.name;
            if (e.width == 4) {
                ResultRecord any = Unallocated();
                _vrups(&any, values.data(), arrayMask.data(), field.data(), uv.rtd(), um.rtd(), fd.rtd());
                ASSERT_EQ(ResultBytes(any), expected) << "_vrups";
            }
        }
    }
}

TEST_F(DataMovement, TransferCopiesTheBytesInElementOrder) {
    const int32_t widths[] = {1, 2, 3, 4, 8, 16};
    for (int trial = 0; trial < 600; ++trial) {
        int32_t sourceWidth = widths[random() % 6], moldWidth = widths[random() % 6];
        std::vector<int32_t> extents = random() % 6 == 0 ? std::vector<int32_t>{} : ShapeFor(random);
        Operand source(extents, sourceWidth, RTD_TYPE_INTEGER, random, extents.empty());
        Operand mold({2}, moldWidth, moldWidth == 3 ? RTD_TYPE_CHARACTER : RTD_TYPE_INTEGER, random, random() % 3 == 0);
        bool hasSize = random() % 3 == 0;
        int32_t size = static_cast<int32_t>(random() % 6);
        std::vector<unsigned char> bytes;
        for (const Tuple& index : Tuples(source.scalar ? std::vector<int32_t>{} : extents)) {
            auto element = source.Element(index);
            bytes.insert(bytes.end(), element.begin(), element.end());
        }
        int64_t elements = hasSize ? size
                           : mold.scalar ? -1
                                         : (static_cast<int64_t>(bytes.size()) - 1) / moldWidth + 1;
        size_t resultBytes = elements < 0 ? static_cast<size_t>(moldWidth) : static_cast<size_t>(elements * moldWidth);
        std::vector<unsigned char> expected(resultBytes, 0);
        std::copy_n(bytes.begin(), std::min(bytes.size(), resultBytes), expected.begin());
        Descriptor sd(source), md(mold);
        ResultRecord own = Unallocated();
        _vrtfi1(&own, source.data(), mold.data(), size, sd.rtd(), md.rtd(), hasSize);
        if (resultBytes == 0) {
            EXPECT_EQ(own.base_ptr, 0u);
            continue;
        }
        ASSERT_EQ(own.rank, elements < 0 ? 0 : 1);
        ASSERT_EQ(ResultBytes(own), expected) << "transfer " << sourceWidth << " to " << moldWidth;
    }
}

}  // namespace
