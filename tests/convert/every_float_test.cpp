// Every one of the 2^32 REAL(4) bit patterns to nine significant digits, nearest, against
// glibc's printf, which is exact; and those nine digits read back, which must give the
// pattern again. A long target kept out of the regular runs:
//   build/host/tests/every_float_test [first_pattern last_pattern]
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "convert/convert.h"

int main(int argc, char** argv) {
    uint64_t first = argc > 2 ? std::strtoull(argv[1], nullptr, 0) : 0;
    uint64_t last = argc > 2 ? std::strtoull(argv[2], nullptr, 0) : 0xFFFFFFFFull;
    auto start = std::chrono::steady_clock::now();
    uint64_t checked = 0;
    uint64_t failures = 0;
    for (uint64_t pattern = first; pattern <= last; ++pattern) {
        uint32_t bits = static_cast<uint32_t>(pattern);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value) || value == 0) continue;
        char ours[32];
        int point, sign;
        __cvt_r(value, 9, &point, &sign, 1, ours, sizeof ours, 1, 0, kRoundNearest);
        char theirs[32];
        std::snprintf(theirs, sizeof theirs, "%.8e", std::fabs(static_cast<double>(value)));
        // "d.dddddddde+XX": the nine digits and the exponent.
        char digits[10] = {theirs[0], theirs[2], theirs[3], theirs[4], theirs[5], theirs[6], theirs[7], theirs[8], theirs[9], 0};
        int exponent = std::atoi(theirs + 11);
        if (std::strcmp(digits, ours) != 0 || point != exponent + 1) {
            if (++failures <= 10) std::printf("differ: %a ours %s e%d, printf %s\n", static_cast<double>(value), ours, point, theirs);
        }
        char text[40];
        std::snprintf(text, sizeof text, "%s0.%se%d", sign ? "-" : "", ours, point);
        float back = ubx_strtof(text, nullptr, kRoundNearest);
        if (std::memcmp(&back, &value, sizeof value) != 0) {
            if (++failures <= 10) std::printf("read back: %a from %s gives %a\n", static_cast<double>(value), text, static_cast<double>(back));
        }
        ++checked;
    }
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%" PRIu64 " finite non-zero patterns checked, %" PRIu64 " differ, %.0f s\n", checked, failures, seconds);
    return failures == 0 ? 0 : 1;
}
