// The DWARF line-table reader against addr2line, which read the same programs at build
// time: every address of two functions, in programs built with DWARF 4 and DWARF 5. Then
// damaged tables, which must end the search, never the program.
#include "diag/line_table.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "diag/elf_image.h"
#include "diag/symbol_names.h"

namespace {

struct Expected {
    uint64_t address;
    std::string file;  // "?" where addr2line knows none
    uint32_t line;
};

std::vector<Expected> ReadOracle(const char* path) {
    std::vector<Expected> rows;
    std::ifstream in(path);
    std::string address, file;
    uint32_t line;
    while (in >> address >> file >> line) rows.push_back({std::stoull(address, nullptr, 16), file, line});
    return rows;
}

std::string Basename(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

struct Subject {
    const char* program;
    const char* oracle;
};

class LineTables : public testing::TestWithParam<Subject> {};

TEST_P(LineTables, AgreeWithAddr2lineOnEveryAddressOfTheFunctions) {
    std::vector<Expected> expected = ReadOracle(GetParam().oracle);
    ASSERT_GT(expected.size(), 40u);
    diag::ElfImage image;
    ASSERT_TRUE(diag::OpenElfImage(GetParam().program, &image));
    ASSERT_FALSE(image.debugLine.empty());
    std::vector<diag::LineQuery> queries(expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        queries[i].address = expected[i].address;
        queries[i].frame = i;
    }
    diag::FindLines(image, queries.data(), queries.size());
    size_t known = 0;
    for (const diag::LineQuery& query : queries) {
        const Expected& want = expected[query.frame];
        if (want.file == "?") {
            EXPECT_FALSE(query.found && query.line != 0) << std::hex << want.address;
            continue;
        }
        ++known;
        ASSERT_TRUE(query.found) << std::hex << want.address;
        EXPECT_EQ(query.line, want.line) << std::hex << want.address;
        char file[512];
        ASSERT_GT(diag::LineFileName(image, query, file, sizeof file), 0u);
        EXPECT_EQ(Basename(file), Basename(want.file)) << std::hex << want.address;
    }
    EXPECT_GT(known, 40u);
    diag::CloseElfImage(&image);
}

TEST_P(LineTables, NameTheFunctionsFromTheSymbolTable) {
    std::vector<Expected> expected = ReadOracle(GetParam().oracle);
    diag::ElfImage image;
    ASSERT_TRUE(diag::OpenElfImage(GetParam().program, &image));
    std::set<std::string> names;
    for (const Expected& row : expected) {
        diag::FunctionSymbol symbol;
        ASSERT_TRUE(diag::FindFunction(image, row.address, &symbol)) << std::hex << row.address;
        names.insert(symbol.name);
    }
    EXPECT_EQ(names, (std::set<std::string>{"subject_branches", "subject_compute"}));
    diag::CloseElfImage(&image);
}

INSTANTIATE_TEST_SUITE_P(Dwarf, LineTables,
                         testing::Values(Subject{VRN_LINE_SUBJECT_DWARF4, VRN_LINE_ORACLE_DWARF4},
                                         Subject{VRN_LINE_SUBJECT_DWARF5, VRN_LINE_ORACLE_DWARF5}),
                         [](const testing::TestParamInfo<Subject>& info) {
                             return info.index == 0 ? std::string("Version4") : std::string("Version5");
                         });

// Looks up every address of the subject in a copy of its tables that `damage` changed.
void SearchDamaged(const diag::ElfImage& original, const std::vector<Expected>& rows,
                   const std::function<void(std::vector<uint8_t>&)>& damage) {
    std::vector<uint8_t> lines(original.debugLine.data, original.debugLine.data + original.debugLine.size);
    damage(lines);
    // Exactly as long as the damaged table, so that the sanitizers see a read past it.
    std::unique_ptr<uint8_t[]> exact(new uint8_t[lines.size() + 1]);
    std::copy(lines.begin(), lines.end(), exact.get());
    diag::ElfImage image = original;
    image.debugLine = {exact.get(), lines.size()};
    std::vector<diag::LineQuery> queries(rows.size());
    for (size_t i = 0; i < rows.size(); ++i) queries[i].address = rows[i].address;
    diag::FindLines(image, queries.data(), queries.size());
    char file[64];
    for (const diag::LineQuery& query : queries) diag::LineFileName(image, query, file, sizeof file);
}

TEST(DamagedLineTables, EndTheSearchAndNothingElse) {
    std::vector<Expected> rows = ReadOracle(VRN_LINE_ORACLE_DWARF5);
    for (const char* program : {VRN_LINE_SUBJECT_DWARF4, VRN_LINE_SUBJECT_DWARF5}) {
        diag::ElfImage image;
        ASSERT_TRUE(diag::OpenElfImage(program, &image));
        size_t size = image.debugLine.size;
        // Cut at every length of the first stretch, then at random ones.
        for (size_t cut = 0; cut < std::min<size_t>(size, 600); ++cut) {
            SearchDamaged(image, rows, [cut](std::vector<uint8_t>& lines) { lines.resize(cut); });
        }
        std::mt19937 random(12345);
        for (int trial = 0; trial < 300; ++trial) {
            SearchDamaged(image, rows, [&](std::vector<uint8_t>& lines) {
                int changes = 1 + static_cast<int>(random() % 8);
                for (int c = 0; c < changes; ++c) lines[random() % lines.size()] = static_cast<uint8_t>(random());
                if (random() % 2) lines.resize(random() % lines.size());
            });
        }
        diag::CloseElfImage(&image);
    }
}

// A version 5 table whose directory entries have no fields, and which claims 2^63 of
// them, then files "z.c" and "a.c", and a row at 0x1000 of file 1: read at once.
TEST(DamagedLineTables, ClaimingCountlessEmptyEntriesAreReadAtOnce) {
    std::vector<uint8_t> header = {5, 0, 8, 0};  // version, address size, segment selector size
    std::vector<uint8_t> fields = {1, 1, 1, static_cast<uint8_t>(-5), 14, 13, 0, 1, 1, 1, 1, 0, 0, 0, 1, 0, 0, 1};
    std::vector<uint8_t> tables = {0, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01,  // none, 2^63 of them
                                   1, 1, 0x08, 2, 'z', '.', 'c', 0,    // files: paths as strings,
                                   'a', '.', 'c', 0};                  // the rows' file 1 the second
    std::vector<uint8_t> program = {0, 9, 2, 0, 0x10, 0, 0, 0, 0, 0, 0,  // set address 0x1000 (little-endian)
                                    1,                                  // copy
                                    2, 0x40,                            // advance 64
                                    0, 1, 1};                           // end of sequence
    std::vector<uint8_t> rest = fields;
    rest.insert(rest.end(), tables.begin(), tables.end());
    std::vector<uint8_t> unit = header;
    uint32_t headerLength = static_cast<uint32_t>(rest.size());
    for (int i = 0; i < 4; ++i) unit.push_back(static_cast<uint8_t>(headerLength >> (8 * i)));
    unit.insert(unit.end(), rest.begin(), rest.end());
    unit.insert(unit.end(), program.begin(), program.end());
    std::vector<uint8_t> section;
    uint32_t length = static_cast<uint32_t>(unit.size());
    for (int i = 0; i < 4; ++i) section.push_back(static_cast<uint8_t>(length >> (8 * i)));
    section.insert(section.end(), unit.begin(), unit.end());

    diag::ElfImage image;
    image.is64 = true;
    image.debugLine = {section.data(), section.size()};
    diag::LineQuery query;
    query.address = 0x1010;
    diag::FindLines(image, &query, 1);
    ASSERT_TRUE(query.found);
    EXPECT_EQ(query.line, 1u);
    char file[16];
    EXPECT_EQ(diag::LineFileName(image, query, file, sizeof file), 3u);
    EXPECT_STREQ(file, "a.c");
}

TEST(ElfImages, RefuseWhatIsNoObjectAndSurviveDamagedHeaders) {
    diag::ElfImage image;
    EXPECT_FALSE(diag::OpenElfImage("/nonexistent/program", &image));
    EXPECT_FALSE(diag::OpenElfImage(VRN_TRACED_LIBRARY_SOURCE, &image));
    // A copy of a real object with its header's fields overwritten at random.
    std::ifstream in(VRN_LINE_SUBJECT_DWARF4, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_GT(bytes.size(), 64u);
    std::string path = testing::TempDir() + "damaged_object";
    std::mt19937 random(777);
    for (int trial = 0; trial < 200; ++trial) {
        std::string damaged = bytes;
        for (int c = 0; c < 6; ++c) damaged[16 + random() % 48] = static_cast<char>(random());
        if (trial % 3 == 0) damaged.resize(64 + random() % (bytes.size() - 64));
        std::ofstream(path, std::ios::binary | std::ios::trunc) << damaged;
        if (diag::OpenElfImage(path.c_str(), &image)) {
            diag::FunctionSymbol symbol;
            diag::FindFunction(image, 0x1000, &symbol);
            diag::LineQuery query;
            query.address = 0x1000;
            diag::FindLines(image, &query, 1);
            diag::CloseElfImage(&image);
        }
    }
    std::remove(path.c_str());
}

}  // namespace
