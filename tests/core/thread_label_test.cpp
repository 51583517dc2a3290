// With a thread library linked in, ERRTHRDNUM=YES labels messages with the thread number.
#include <gtest/gtest.h>
#include <omp.h>

#include "core/context.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class ThreadLabels : public RuntimeTest {};

TEST_F(ThreadLabels, MessagesAndStopLinesCarryTheThreadNumber) {
    EXPECT_GE(omp_get_max_threads(), 1);  // keeps the thread library linked
    auto program = [] {
        setenv("VRNRTEOPTS", "errthrdnum=yes", 1);
        ResetRuntime();
        _vrnRecoverableError(166);
        StopCode code{0, 1};
        _vrnStop(&code, 4);
    };
    EXPECT_EXIT(program(), ::testing::ExitedWithCode(4), "^<Thread 0> 3714-166\n<Thread 0> STOP 4\n$");
}

}  // namespace
}  // namespace vrntest
