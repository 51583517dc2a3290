// Formatted output through the statement calls: format control, the edit conversions and
// real editing, checked against the fields the Fortran rules give.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "tests/support/fortran.h"
#include "vrn90.h"

namespace {

using vrntest::FormatWriter;
using vrntest::Formatted;

class FormattedOutputTest : public vrntest::RuntimeTest {};

TEST_F(FormattedOutputTest, Smoke) {
    EXPECT_EQ(Formatted("(I5)", [](FormatWriter& w) { w.Item(42); }), "   42\n");
    EXPECT_EQ(Formatted("(F6.2)", [](FormatWriter& w) { w.Item(2.5); }), "  2.50\n");
    EXPECT_EQ(Formatted("(ES12.4)", [](FormatWriter& w) { w.Item(1234.5678); }), "  1.2346E+03\n");
}

}  // namespace
