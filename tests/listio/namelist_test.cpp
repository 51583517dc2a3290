// Namelist READ and WRITE as compiled code issues them.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/listio/namelist_support.h"

namespace vrntest {
namespace {

class Namelist : public RuntimeTest {};

TEST_F(Namelist, Smoke) {
    int32_t n = 10;
    double x = 1.5;
    char name[5] = {'a', 'b', 'c', ' ', ' '};
    int32_t a[3] = {1, 2, 3};
    auto rtd = DescribeArray(a, 4, RTD_TYPE_INTEGER, {{1, 3}});
    Group group("config");
    group.Scalar("n", &n, 0, 4).Scalar("x", &x, 4, 8).Scalar("name", name, 2, 0, 5).Array("a", &rtd, 0, 4);
    std::string text = WriteInternal(group);
    std::printf("%s", text.c_str());
    n = 0; x = 0; std::memset(name, 'z', 5); a[0] = a[1] = a[2] = 0;
    EXPECT_EQ(ReadInternal(group, text), 0);
    EXPECT_EQ(n, 10);
    EXPECT_EQ(x, 1.5);
    EXPECT_EQ(std::string(name, 5), "abc  ");
    EXPECT_EQ(a[2], 3);
    EXPECT_EQ(ReadInternal(group, "&CONFIG a(2)=7, n=3 x=2.5 name='q' /"), 0);
    EXPECT_EQ(a[1], 7);
    EXPECT_EQ(n, 3);
}

}  // namespace
}  // namespace vrntest
