// Whole arrays as items, in every form: the output must equal that of the same elements
// passed one by one, a read must fill exactly the section's elements, and a dense array
// must reach the record layer in few calls.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/context.h"
#include "tests/intrinsics/arrays.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

constexpr int32_t kStorage = 400;
constexpr int32_t kSentinel = -1;

// A section of an INTEGER(4) array: its descriptor, and its elements in Fortran order as a
// naive odometer over the extents finds them.
struct Section {
    std::string name;
    Array array;
    int32_t firstOffset;
    std::vector<int32_t> offsets;

    Section(std::string label, std::vector<int32_t> extents, std::vector<int32_t> strides, int32_t first)
        : name(std::move(label)), array(extents, 4, RTD_TYPE_INTEGER, strides), firstOffset(first) {
        size_t rank = extents.size();
        for (int32_t extent : extents) {
            if (extent < 1) return;
        }
        std::vector<int32_t> index(rank, 0);
        for (;;) {
            int32_t offset = first;
            for (size_t d = 0; d < rank; ++d) offset += index[d] * strides[d];
            offsets.push_back(offset);
            size_t d = 0;
            while (d < rank && ++index[d] == extents[d]) index[d++] = 0;
            if (d == rank) return;
        }
    }
    // Not array.rtd: that points into the storage of the Array first built, before copies.
    uintptr_t Descriptor() const { return reinterpret_cast<uintptr_t>(array.storage); }
};

std::vector<Section> Sections() {
    std::vector<Section> all;
    all.emplace_back("contiguous", std::vector<int32_t>{10}, std::vector<int32_t>{1}, 0);
    all.emplace_back("stride 2", std::vector<int32_t>{5}, std::vector<int32_t>{2}, 1);
    all.emplace_back("negative stride", std::vector<int32_t>{5}, std::vector<int32_t>{-1}, 9);
    all.emplace_back("zero extent", std::vector<int32_t>{0}, std::vector<int32_t>{1}, 0);
    all.emplace_back("dense columns", std::vector<int32_t>{3, 4}, std::vector<int32_t>{1, 5}, 2);
    all.emplace_back("inner extent 1", std::vector<int32_t>{1, 4}, std::vector<int32_t>{1, 5}, 0);
    all.emplace_back("rank 3 gaps", std::vector<int32_t>{2, 3, 2}, std::vector<int32_t>{1, 3, 12}, 0);
    all.emplace_back("rank 3 reversed middle", std::vector<int32_t>{2, 3, 2}, std::vector<int32_t>{2, -4, 14}, 8);
    all.emplace_back("rank 7", std::vector<int32_t>{2, 1, 2, 1, 2, 1, 2}, std::vector<int32_t>{1, 2, 2, 4, 4, 8, 8}, 0);
    std::vector<int32_t> extents(20, 1), strides(20, 1);
    extents[0] = extents[5] = extents[12] = extents[19] = 2;
    for (int32_t d = 1, running = 2; d < 20; ++d) {
        strides[d] = running;
        running *= extents[d];
    }
    strides[0] = 1;
    all.emplace_back("rank 20", extents, strides, 0);
    return all;
}

std::vector<int32_t> Values() {
    std::vector<int32_t> values(kStorage);
    for (int32_t i = 0; i < kStorage; ++i) values[i] = i * 7 + 1;
    return values;
}

constexpr int32_t kKind = 4;
constexpr int32_t kRecord = 600;

std::string Records(const std::vector<char>& area) {
    std::string text(area.begin(), area.end());
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

class ArrayTransfer : public RuntimeTest {
protected:
    TempDir dir;

    void OpenFile(int32_t unit, const char* name) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, dir.Path(name)).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
        ASSERT_EQ(Open(unit, s), 0);
    }
};

TEST_F(ArrayTransfer, EveryFormWritesWhatTheElementsWriteOneByOne) {
    std::vector<int32_t> values = Values();
    int32_t unit = 20;
    for (const Section& section : Sections()) {
        SCOPED_TRACE(section.name);
        uintptr_t descriptor = section.Descriptor();
        int32_t* first = values.data() + section.firstOffset;

        std::vector<char> whole(kRecord * 4, ' '), single(kRecord * 4, ' ');
        {
            ListWriter w(whole.data(), kRecord, 4);
            _vrnWriteLDArray(w.context(), first, &descriptor, &kKind, VRN_ARRAY_DESCRIBED, 0);
            w.End();
            ListWriter s(single.data(), kRecord, 4);
            for (int32_t offset : section.offsets) s.Item(values[offset]);
            s.End();
            EXPECT_EQ(Records(whole), Records(single));
        }
        std::fill(whole.begin(), whole.end(), ' ');
        std::fill(single.begin(), single.end(), ' ');
        {
            FormatWriter w(whole.data(), kRecord, 4, "(8I5)");
            _vrnWriteFmtArray(w.context(), first, &descriptor, &kKind, VRN_ARRAY_DESCRIBED, 0);
            w.End();
            FormatWriter s(single.data(), kRecord, 4, "(8I5)");
            for (int32_t offset : section.offsets) s.Item(values[offset]);
            s.End();
            EXPECT_EQ(Records(whole), Records(single));
        }
        {
            OpenFile(unit, "whole");
            Unformatted w(unit, UfmtWrite);
            _vrnWriteUfmtArray(w.context(), first, &descriptor, &kKind, VRN_ARRAY_DESCRIBED, 0);
            w.End();
            Close(unit);
            OpenFile(unit, "single");
            Unformatted s(unit, UfmtWrite);
            for (int32_t offset : section.offsets) s.Item(values[offset]);
            s.End();
            Close(unit);
            EXPECT_EQ(ReadFile(dir.Path("whole")), ReadFile(dir.Path("single")));
        }
    }
}

TEST_F(ArrayTransfer, EveryFormReadsExactlyTheSectionsElements) {
    std::vector<int32_t> values = Values();
    int32_t unit = 21;
    for (const Section& section : Sections()) {
        SCOPED_TRACE(section.name);
        uintptr_t descriptor = section.Descriptor();
        std::vector<int32_t> expected(kStorage, kSentinel);
        std::string text;
        for (int32_t offset : section.offsets) {
            expected[offset] = values[offset];
            text += std::to_string(values[offset]) + " ";
        }
        text.resize(kRecord, ' ');

        std::vector<int32_t> target(kStorage, kSentinel);
        ListReader l(text.data(), kRecord, 1);
        _vrnReadLDArray(l.context(), target.data() + section.firstOffset, &descriptor, &kKind, VRN_ARRAY_DESCRIBED, 0);
        EXPECT_EQ(l.End(), 0);
        EXPECT_EQ(target, expected);

        std::string fields;
        for (int32_t offset : section.offsets) {
            std::string field = std::to_string(values[offset]);
            fields += std::string(6 - field.size(), ' ') + field;
        }
        fields.resize(kRecord, ' ');
        std::fill(target.begin(), target.end(), kSentinel);
        FormatReader f(fields.data(), kRecord, 1, "(100I6)");
        _vrnReadFmtArray(f.context(), target.data() + section.firstOffset, &descriptor, &kKind, VRN_ARRAY_DESCRIBED, 0);
        EXPECT_EQ(f.End(), 0);
        EXPECT_EQ(target, expected);

        OpenFile(unit, "data");
        Unformatted w(unit, UfmtWrite);
        for (int32_t offset : section.offsets) w.Item(values[offset]);
        w.End();
        FileCommand(unit, VRN_COMMAND_REWIND);
        std::fill(target.begin(), target.end(), kSentinel);
        Unformatted r(unit, UfmtRead);
        _vrnReadUfmtArray(r.context(), target.data() + section.firstOffset, &descriptor, &kKind, VRN_ARRAY_DESCRIBED, 0);
        EXPECT_EQ(r.End(), 0);
        Close(unit);
        EXPECT_EQ(target, expected);
    }
}

// The record layer's writer, counting the calls it gets.
int32_t gWrites = 0;
WriteItemRoutine gWriter = nullptr;
int32_t CountingWriter(LocalContext* context, const void* bytes, int32_t count) {
    ++gWrites;
    return gWriter(context, bytes, count);
}

int32_t WritesFor(int32_t unit, void* first, uintptr_t lengthWord, uint32_t typeWord) {
    Unformatted w(unit, UfmtWrite);
    gWrites = 0;
    gWriter = w.context()->writeItem;
    w.context()->writeItem = CountingWriter;
    _vrnWriteUfmtArray(w.context(), first, &lengthWord, &kKind, typeWord, 0);
    w.End();
    return gWrites;
}

TEST_F(ArrayTransfer, DenseStorageMovesInOneCallPerRun) {
    OpenFile(22, "counted");
    std::vector<int32_t> values = Values();
    // A contiguous array passed as a run: one call.
    EXPECT_EQ(WritesFor(22, values.data(), 40, VRN_ARRAY_RUN), 1);
    // Dense in its first dimension: one call per column.
    Array whole({20, 10}, 4, RTD_TYPE_INTEGER);
    EXPECT_EQ(WritesFor(22, values.data(), reinterpret_cast<uintptr_t>(whole.rtd), VRN_ARRAY_DESCRIBED), 10);
    Array columns({3, 4}, 4, RTD_TYPE_INTEGER, {1, 5});
    EXPECT_EQ(WritesFor(22, values.data(), reinterpret_cast<uintptr_t>(columns.rtd), VRN_ARRAY_DESCRIBED), 4);
    // Every second element: gathered into pieces of at most 8192 elements or 64 KB.
    Array strided({6}, 4, RTD_TYPE_INTEGER, {2});
    EXPECT_EQ(WritesFor(22, values.data(), reinterpret_cast<uintptr_t>(strided.rtd), VRN_ARRAY_DESCRIBED), 1);
    std::vector<int32_t> big(40000);
    for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<int32_t>(i);
    Array everySecond({20000}, 4, RTD_TYPE_INTEGER, {2});
    uintptr_t descriptor = reinterpret_cast<uintptr_t>(everySecond.rtd);
    EXPECT_EQ(WritesFor(22, big.data(), descriptor, VRN_ARRAY_DESCRIBED), 3);
    FileCommand(22, VRN_COMMAND_BACKSPACE);
    std::vector<int32_t> back(40000, kSentinel);
    Unformatted r(22, UfmtRead);
    _vrnReadUfmtArray(r.context(), back.data(), &descriptor, &kKind, VRN_ARRAY_DESCRIBED, 0);
    EXPECT_EQ(r.End(), 0);
    for (size_t i = 0; i < big.size(); ++i) ASSERT_EQ(back[i], i % 2 ? kSentinel : big[i]) << i;
    // Nothing at all for an empty section, and the statement still ends well.
    Array empty({4, 0}, 4, RTD_TYPE_INTEGER);
    EXPECT_EQ(WritesFor(22, values.data(), reinterpret_cast<uintptr_t>(empty.rtd), VRN_ARRAY_DESCRIBED), 0);
    Close(22);
}

TEST_F(ArrayTransfer, SlashInListInputStopsTheArrayWithItsIndexCleared) {
    std::vector<int32_t> target(6, kSentinel);
    std::string text = "1 2 / 4 5 6";
    uintptr_t bytes = 24;
    ListReader r(text.data(), static_cast<uint32_t>(text.size()), 1);
    _vrnReadLDArray(r.context(), target.data(), &bytes, &kKind, VRN_ARRAY_RUN, 0);
    EXPECT_EQ(r.context()->arrayActive, 0u);
    EXPECT_EQ(r.context()->arrayIndex, 0);
    EXPECT_EQ(r.End(), 0);
    EXPECT_EQ(target, (std::vector<int32_t>{1, 2, kSentinel, kSentinel, kSentinel, kSentinel}));
}

}  // namespace
}  // namespace vrntest
