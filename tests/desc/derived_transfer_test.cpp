// Derived types as items, from the compiler's tables: their components in every form, and
// defined I/O procedures (written here as compiled code would write them) running as
// child statements of list-directed, formatted and unformatted parents.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <cstring>
#include <string>
#include <vector>

#include "core/context.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

VrnDTRow Row(uint32_t typeWord, uintptr_t kind, uintptr_t length, size_t offset) {
    return VrnDTRow{typeWord, kind, length, {0, 0}, offset};
}

// A table of `count` rows, as the compiler lays one out.
struct Table {
    std::vector<uintptr_t> words;
    explicit Table(uintptr_t size, std::vector<VrnDTRow> rows) : words(2 + rows.size() * 6) {
        words[0] = rows.size();
        words[1] = size;
        std::memcpy(words.data() + 2, rows.data(), rows.size() * sizeof(VrnDTRow));
    }
    const VrnDTTable* get() const { return reinterpret_cast<const VrnDTTable*>(words.data()); }
};

// ---- A type with components of every kind ----

struct Inner {
    int32_t n;
    float r;
};
struct Mixed {
    int32_t i;
    double d;
    char c[5];
    float z[2];  // complex(4)
    int8_t flag; // logical(1)
    int16_t v[3];
    Inner inner;
};

class DerivedTypes : public RuntimeTest {
protected:
    Table inner{sizeof(Inner), {Row(0, 4, 0, offsetof(Inner, n)), Row(4, 4, 0, offsetof(Inner, r))}};
    const VrnDTTable* innerTable = inner.get();
    Table mixed{sizeof(Mixed),
                {Row(0, 4, 0, offsetof(Mixed, i)), Row(4, 8, 0, offsetof(Mixed, d)), Row(2, 5, 5, offsetof(Mixed, c)),
                 Row(5, 4, 8, offsetof(Mixed, z)), Row(1, 1, 0, offsetof(Mixed, flag)),
                 Row(VRN_ARRAY_RUN | 0, 2, 6, offsetof(Mixed, v)),
                 Row(6, reinterpret_cast<uintptr_t>(innerTable), 0, offsetof(Mixed, inner))}};
    const VrnDTTable* table = mixed.get();
    Mixed sample{-12, 2.5, {'a', 'b', 'c', 'd', 'e'}, {1.5f, -2.0f}, 1, {7, 8, 9}, {42, 0.25f}};
    TempDir dir;

    static void ExpectSame(const Mixed& a, const Mixed& b) {
        EXPECT_EQ(a.i, b.i);
        EXPECT_EQ(a.d, b.d);
        EXPECT_EQ(std::string(a.c, 5), std::string(b.c, 5));
        EXPECT_EQ(a.z[0], b.z[0]);
        EXPECT_EQ(a.z[1], b.z[1]);
        EXPECT_EQ(a.flag, b.flag);
        EXPECT_EQ(std::vector<int16_t>(a.v, a.v + 3), std::vector<int16_t>(b.v, b.v + 3));
        EXPECT_EQ(a.inner.n, b.inner.n);
        EXPECT_EQ(a.inner.r, b.inner.r);
    }
};

TEST_F(DerivedTypes, ComponentsGoThroughEveryFormAndComeBack) {
    char area[200];
    std::memset(area, ' ', sizeof area);
    ListWriter lw(area, 200, 1);
    _vrnWriteLDDT(lw.context(), &sample, 0, &table);
    lw.End();
    std::string text(area, 200);
    EXPECT_EQ(text.substr(0, text.find_last_not_of(' ') + 1), " -12 2.50000000000000000 abcde (1.500000000,-2.000000000) T 7 8 9 42 0.2500000000");
    Mixed back{};
    ListReader lr(area, 200, 1);
    _vrnReadLDDT(lr.context(), &back, 0, &table);
    EXPECT_EQ(lr.End(), 0);
    ExpectSame(back, sample);

    std::string fields = Formatted("(I4,F5.1,A6,2F5.1,L2,3I2,I3,F5.2)", [&](FormatWriter& w) {
        _vrnWriteFmtDT(w.context(), &sample, 0, &table);
    });
    EXPECT_EQ(fields, " -12  2.5 abcde  1.5 -2.0 T 7 8 9 42 0.25\n");
    back = Mixed{};
    FormatReader fr(fields.data(), static_cast<uint32_t>(fields.size() - 1), 1, "(I4,F5.1,1X,A5,2F5.1,L2,3I2,I3,F5.2)");
    _vrnReadFmtDT(fr.context(), &back, 0, &table);
    EXPECT_EQ(fr.End(), 0);
    ExpectSame(back, sample);

    // Unformatted: the components side by side, without the padding between them.
    Specifiers s;
    s.Text(VRN_KEY_FILE, dir.Path("mixed")).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
    ASSERT_EQ(Open(40, s), 0);
    Unformatted uw(40, UfmtWrite);
    _vrnWriteUfmtDT(uw.context(), &sample, 0, &table);
    uw.End();
    FileCommand(40, VRN_COMMAND_REWIND);
    back = Mixed{};
    Unformatted ur(40, UfmtRead);
    _vrnReadUfmtDT(ur.context(), &back, 0, &table);
    EXPECT_EQ(ur.End(), 0);
    Close(40);
    ExpectSame(back, sample);
    std::string bytes = ReadFile(dir.Path("mixed"));
    int32_t payload = 4 + 8 + 5 + 8 + 1 + 6 + 8;
    ASSERT_EQ(bytes.size(), static_cast<size_t>(payload + 8));
    EXPECT_EQ(bytes.substr(4, 4), std::string(reinterpret_cast<const char*>(&sample.i), 4));
    EXPECT_EQ(bytes.substr(16, 5), "abcde");
    EXPECT_EQ(bytes.substr(payload - 4, 8), std::string(reinterpret_cast<const char*>(&sample.inner), 8));
}

TEST_F(DerivedTypes, ArrayOfDerivedTypesOnASwappedUnitSwapsEachComponent) {
    SetOptions("ufmt_littleendian=41");
    Inner pairs[2] = {{1, 2.0f}, {3, 4.0f}};
    Specifiers s;
    s.Text(VRN_KEY_FILE, dir.Path("swapped")).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
    ASSERT_EQ(Open(41, s), 0);
    uintptr_t bytes = sizeof pairs;
    Unformatted w(41, UfmtWrite);
    _vrnWriteUfmtArray(w.context(), pairs, &bytes, &innerTable, VRN_ARRAY_RUN | 6, 0);
    w.End();
    FileCommand(41, VRN_COMMAND_REWIND);
    Inner back[2] = {};
    Unformatted r(41, UfmtRead);
    _vrnReadUfmtArray(r.context(), back, &bytes, &innerTable, VRN_ARRAY_RUN | 6, 0);
    EXPECT_EQ(r.End(), 0);
    Close(41);
    EXPECT_EQ(back[1].n, 3);
    EXPECT_EQ(back[1].r, 4.0f);
    std::string file = ReadFile(dir.Path("swapped"));
    std::string second(reinterpret_cast<const char*>(&pairs[1].n), 4);
    std::reverse(second.begin(), second.end());
    EXPECT_EQ(file.substr(4 + 8, 4), second);
}

// ---- Defined I/O ----

struct Point {
    int32_t x, y;
};

// What the procedures saw, for the tests to check.
struct Seen {
    std::string iotype;
    std::vector<int32_t> vlist;
    int64_t unit = 0;
    uintptr_t value = 0;
} seen;

const RTD* Note(const RTD* dtv, const void* unit, const char* iotype, uintptr_t vlist, uintptr_t count,
                uintptr_t value, int32_t iotypeLength, bool wide = false) {
    seen.iotype = iotype != nullptr ? std::string(iotype, iotypeLength) : "";
    const auto* entries = reinterpret_cast<const int32_t*>(vlist);
    seen.vlist.assign(entries, entries + count);
    int32_t narrow;
    std::memcpy(&narrow, unit, 4);
    seen.unit = narrow;
    if (wide) std::memcpy(&seen.unit, unit, 8);
    seen.value = value;
    EXPECT_NE(dtv->header.flags & RTD_FLAG_IS_ASSOCIATED, 0);
    return dtv;
}

Point* Object(const RTD* dtv) { return reinterpret_cast<Point*>(dtv->base_ptr); }
int32_t UnitOf(const void* unit) {
    int32_t value;
    std::memcpy(&value, unit, 4);
    return value;
}

// WRITE (unit, FMT='(A,I0,A,I0,A)', IOSTAT=iostat, IOMSG=iomsg) '(', x, ',', y, ')'
// or in list-directed form WRITE (unit, *) x, y.
void WritePoint(const RTD* dtv, const void* unit, const char* iotype, uintptr_t vlist, uintptr_t count, void* iostat,
                char*, uintptr_t value, int32_t iotypeLength, int32_t) {
    Point* p = Object(Note(dtv, unit, iotype, vlist, count, value, iotypeLength));
    if (seen.iotype == "LISTDIRECTED") {
        ListWriter(UnitOf(unit), nullptr, 0, iostat).Item(p->x).Item(p->y).End();
        return;
    }
    FormatWriter(UnitOf(unit), "(A,I0,A,I0,A)", nullptr, 0, iostat).Item("(").Item(p->x).Item(",").Item(p->y).Item(")").End();
}

void ReadPoint(const RTD* dtv, const void* unit, const char* iotype, uintptr_t vlist, uintptr_t count, void* iostat,
               char*, uintptr_t value, int32_t iotypeLength, int32_t) {
    Point* p = Object(Note(dtv, unit, iotype, vlist, count, value, iotypeLength));
    if (seen.iotype == "LISTDIRECTED") {
        ListReader(UnitOf(unit), nullptr, 0, iostat).Item(&p->x).Item(&p->y).End();
        return;
    }
    FormatReader(UnitOf(unit), "(2I2)", nullptr, 0, iostat).Item(&p->x).Item(&p->y).End();
}

void WritePointUnformatted(const RTD* dtv, const void* unit, const char*, uintptr_t, uintptr_t, void* iostat, char*,
                           uintptr_t, int32_t, int32_t) {
    Point* p = Object(dtv);
    Unformatted(UnitOf(unit), UfmtWrite, nullptr, 0, iostat).Item(p->x).Item(p->y).End();
}

void ReadPointUnformatted(const RTD* dtv, const void* unit, const char*, uintptr_t, uintptr_t, void* iostat, char*,
                          uintptr_t, int32_t, int32_t) {
    Point* p = Object(dtv);
    Unformatted(UnitOf(unit), UfmtRead, nullptr, 0, iostat).Into(&p->x).Into(&p->y).End();
}

void FailingProcedure(const RTD*, const void*, const char*, uintptr_t, uintptr_t, void* iostat, char* iomsg, uintptr_t,
                      int32_t, int32_t iomsgLength) {
    int32_t endOfFile = -1;
    std::memcpy(iostat, &endOfFile, 4);
    std::memset(iomsg, ' ', static_cast<size_t>(iomsgLength));
    std::memcpy(iomsg, "no point", 8);
}

// INQUIRE (UNIT=unit, OPENED=opened, IOSTAT=iostat) inside the procedure.
struct {
    int32_t iostat, opened;
} inquired;
void InquireUnit(const RTD*, const void* unit, const char*, uintptr_t, uintptr_t, void*, char*, uintptr_t, int32_t,
                 int32_t) {
    inquired.opened = 9;
    Specifiers s;
    s.Location("f", 1).Address(VRN_KEY_OPENED, &inquired.opened, 4);
    _vrnIOCmd(UnitOf(unit), VRN_COMMAND_INQUIRE, s.list(), VRN_OPTION_INQUIRE_BY_UNIT, &inquired.iostat);
}

class DefinedIO : public RuntimeTest {
protected:
    Table pointTable{sizeof(Point), {Row(0, 4, 0, 0), Row(0, 4, 0, 4)}};
    const VrnDTTable* table = pointTable.get();
    RTD dtv{0, RTDHeader{RTD_SCALAR, RTD_TYPE_DERIVED, 0, 2}, static_cast<int32_t>(sizeof(Point))};
    VrnDTIORow writeRow{0, reinterpret_cast<uintptr_t>(&dtv), 0, 0, 77, 0};
    TempDir dir;

    const VrnDTIORow* Procedure(VrnDefinedIO procedure) {
        rows.push_back(writeRow);
        rows.back().procedure = reinterpret_cast<uintptr_t>(procedure);
        return &rows.back();
    }
    void OpenFormatted(int32_t unit, const char* name, uint32_t form = VRN_KEY_FORMATTED) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, dir.Path(name)).Keyword(VRN_KEY_FORM, form);
        ASSERT_EQ(Open(unit, s), 0);
    }
    std::deque<VrnDTIORow> rows;
};

TEST_F(DefinedIO, FormattedParentHandsOverTheDescriptorsTextAndVList) {
    Point p{1, 2};
    const VrnDTIORow* dtio = Procedure(WritePoint);
    std::string out = Formatted("(A,DT\"pt\"(3,-4),A)", [&](FormatWriter& w) {
        w.Item("x");
        _vrnWriteFmtDT_DTIO(w.context(), &p, 0, &table, &dtio);
        w.Item("y");
    });
    EXPECT_EQ(out, "x(1,2)y\n");
    EXPECT_EQ(seen.iotype, "DTpt");
    EXPECT_EQ(seen.vlist, (std::vector<int32_t>{3, -4}));
    EXPECT_EQ(seen.unit, -2);  // an internal file
    EXPECT_EQ(seen.value, 77u);

    // On a unit, read back through the input procedure; the scan of the parent goes on
    // behind the child's fields.
    OpenFormatted(50, "points");
    FormatWriter(50, "(A)").Item(" 1 7 8 9").End();
    FileCommand(50, VRN_COMMAND_REWIND);
    int32_t before = 0, after = 0;
    Point q{};
    const VrnDTIORow* reader = Procedure(ReadPoint);
    FormatReader r(50, "(I2,DT,I2)");
    r.Item(&before);
    _vrnReadFmtDT_DTIO(r.context(), &q, 0, &table, &reader);
    r.Item(&after);
    EXPECT_EQ(r.End(), 0);
    Close(50);
    EXPECT_EQ(seen.iotype, "DT");
    EXPECT_EQ(seen.unit, 50);
    EXPECT_EQ((std::vector<int32_t>{before, q.x, q.y, after}), (std::vector<int32_t>{1, 7, 8, 9}));
}

TEST_F(DefinedIO, ListDirectedChildContinuesTheParentsLineAndScan) {
    Point points[2] = {{1, 2}, {3, 4}};
    const VrnDTIORow* dtio = Procedure(WritePoint);
    char area[80];
    std::memset(area, ' ', sizeof area);
    ListWriter w(area, 80, 1);
    w.Item(5);
    uintptr_t bytes = sizeof points;
    _vrnWriteLDArray_DTIO(w.context(), points, &bytes, &table, VRN_ARRAY_RUN | 6, 0, &dtio);
    w.Item(6);
    w.End();
    EXPECT_EQ(std::string(area, 16), " 5 1 2 3 4 6    ");
    EXPECT_EQ(seen.iotype, "LISTDIRECTED");
    EXPECT_TRUE(seen.vlist.empty());

    const VrnDTIORow* reader = Procedure(ReadPoint);
    std::string text = "10, 20 30 , 40";
    int32_t n = 0, m = 0;
    Point q{};
    ListReader r(text.data(), static_cast<uint32_t>(text.size()), 1);
    r.Item(&n);
    _vrnReadLDDT_DTIO(r.context(), &q, 0, &table, &reader);
    r.Item(&m);
    EXPECT_EQ(r.End(), 0);
    EXPECT_EQ((std::vector<int32_t>{n, q.x, q.y, m}), (std::vector<int32_t>{10, 20, 30, 40}));
}

TEST_F(DefinedIO, UnformattedChildWritesIntoTheParentsRecord) {
    OpenFormatted(51, "record", VRN_KEY_UNFORMATTED);
    Point p{1, 2};
    const VrnDTIORow* writer = Procedure(WritePointUnformatted);
    Unformatted w(51, UfmtWrite);
    w.Item(5);
    _vrnWriteUfmtDT_DTIO(w.context(), &p, 0, &table, &writer);
    EXPECT_EQ(w.End(), 0);
    FileCommand(51, VRN_COMMAND_REWIND);
    int32_t five = 0;
    Point q{};
    const VrnDTIORow* reader = Procedure(ReadPointUnformatted);
    Unformatted r(51, UfmtRead);
    r.Into(&five);
    _vrnReadUfmtDT_DTIO(r.context(), &q, 0, &table, &reader);
    EXPECT_EQ(r.End(), 0);
    Close(51);
    EXPECT_EQ((std::vector<int32_t>{five, q.x, q.y}), (std::vector<int32_t>{5, 1, 2}));
    int32_t words[5] = {12, 5, 1, 2, 12};
    EXPECT_EQ(ReadFile(dir.Path("record")), std::string(reinterpret_cast<const char*>(words), sizeof words));
}

// A type whose procedure writes a component that has a procedure of its own.
struct Outer {
    int32_t id;
    Point p;
};
const VrnDTTable* gPointTable;
const VrnDTIORow* gPointRow;

void WriteOuter(const RTD* dtv, const void* unit, const char*, uintptr_t, uintptr_t, void* iostat, char*, uintptr_t,
                int32_t, int32_t) {
    auto* outer = reinterpret_cast<Outer*>(dtv->base_ptr);
    FormatWriter w(UnitOf(unit), "(A,I0,DT,A)", nullptr, 0, iostat);
    w.Item("[").Item(outer->id);
    _vrnWriteFmtDT_DTIO(w.context(), &outer->p, 0, &gPointTable, &gPointRow);
    w.Item("]").End();
}

TEST_F(DefinedIO, ChildRunsAChildOfItsOwn) {
    gPointTable = table;
    gPointRow = Procedure(WritePoint);
    RTD outerDtv{0, RTDHeader{RTD_SCALAR, RTD_TYPE_DERIVED, 0, 2}, static_cast<int32_t>(sizeof(Outer))};
    VrnDTIORow outerRow{reinterpret_cast<uintptr_t>(WriteOuter), reinterpret_cast<uintptr_t>(&outerDtv), 0, 0, 0, 0};
    const VrnDTIORow* dtio = &outerRow;
    Table outerTable{sizeof(Outer), {Row(0, 4, 0, 0), Row(6, reinterpret_cast<uintptr_t>(table), 0, 4)}};
    const VrnDTTable* outerTablePointer = outerTable.get();
    Outer o{9, {1, 2}};
    std::string out = Formatted("(A,DT,A)", [&](FormatWriter& w) {
        w.Item("<");
        _vrnWriteFmtDT_DTIO(w.context(), &o, 0, &outerTablePointer, &dtio);
        w.Item(">");
    });
    EXPECT_EQ(out, "<[9(1,2)]>\n");
}

TEST_F(DefinedIO, ProcedureIostatReachesTheParent) {
    const VrnDTIORow* failing = Procedure(FailingProcedure);
    Point p{1, 2};
    int32_t iostat = 0;
    char message[20];
    Specifiers s;
    s.Location("f", 1).Address(VRN_KEY_IOMSG, message, sizeof message);
    char area[40];
    ListWriter w(area, 40, 1, 0, &iostat, &s);
    _vrnWriteLDDT_DTIO(w.context(), &p, 0, &table, &failing);
    EXPECT_EQ(w.context()->status, 1);  // end of file
    EXPECT_EQ(w.End(), 1);
    EXPECT_EQ(iostat, -1);
    EXPECT_EQ(std::string(message, 8), "no point");

    // Without IOSTAT= the parent reports message 205 with the value, and the program ends.
    UseCatalogue(Catalogue::Built);
    EXPECT_EXIT(
        {
            ListWriter parent(area, 40, 1);
            _vrnWriteLDDT_DTIO(parent.context(), &p, 0, &table, &failing);
        },
        ::testing::ExitedWithCode(1), "3714-205 A defined I/O procedure returned the error status -1.");
}

TEST_F(DefinedIO, InquireInsideAProcedureKnowsUnitsFromInternalFiles) {
    Point p{1, 2};
    const VrnDTIORow* dtio = Procedure(InquireUnit);
    Formatted("(DT)", [&](FormatWriter& w) { _vrnWriteFmtDT_DTIO(w.context(), &p, 0, &table, &dtio); });
    EXPECT_EQ(inquired.iostat, 33);
    EXPECT_EQ(inquired.opened, 9);
    OpenFormatted(51, "inquired");
    FormatWriter w(51, "(DT)");
    _vrnWriteFmtDT_DTIO(w.context(), &p, 0, &table, &dtio);
    EXPECT_EQ(w.End(), 0);
    EXPECT_EQ(inquired.iostat, 0);
    EXPECT_EQ(inquired.opened, 1);
}

TEST_F(DefinedIO, IOLengthCountsTheComponentsAndCallsNoProcedure) {
    Point p{1, 2};
    const VrnDTIORow* dtio = Procedure(FailingProcedure);
    int32_t length = -1;
    Specifiers s;
    s.Location("f", 1).Address(VRN_KEY_IOLENGTH, &length);
    LocalContext* context = _vrnBeginIO(nullptr, UfmtWrite, s.list(), 0, nullptr, 0, nullptr);
    _vrnWriteUfmtDT_DTIO(context, &p, 0, &table, &dtio);
    EXPECT_EQ(_vrnEndIO(context), 0);
    EXPECT_EQ(length, 8);
}

}  // namespace
}  // namespace vrntest
