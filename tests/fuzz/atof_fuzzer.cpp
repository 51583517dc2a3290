// Fuzzes decimal-to-binary conversion and the real-field scanner: any text must give a
// value without a fault or a read past its end, and the wide-product road must give the
// bits of the exact road in every mode.
#include <cmath>
#include <cstring>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <vector>

#include "convert/convert.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<char> text(data, data + size);
    text.push_back(0);
    const int keys[] = {kRoundNearest, kRoundUp, kRoundDown, kRoundZero, kRoundCompatible};
    int key = keys[size % 5];
    double value = ubx_atof(text.data(), key);
    float single = ubx_strtof(text.data(), nullptr, key);
    DoubleDouble pair = _qatof(text.data(), key);
    // The modes agree with each other: DOWN and UP are the same number or neighbours, and
    // every other mode gives one of the two.
    double down = ubx_atof(text.data(), kRoundDown);
    double up = ubx_atof(text.data(), kRoundUp);
    if (std::isfinite(down) && std::isfinite(up)) {
        if (down > up || (down != up && std::nextafter(down, up) != up)) std::abort();
        for (int other : {kRoundNearest, kRoundZero, kRoundCompatible}) {
            double v = ubx_atof(text.data(), other);
            if (v != down && v != up) std::abort();
        }
        float downSingle = ubx_strtof(text.data(), nullptr, kRoundDown);
        float upSingle = ubx_strtof(text.data(), nullptr, kRoundUp);
        if (std::isfinite(downSingle) && std::isfinite(upSingle) &&
            (downSingle > upSingle || (downSingle != upSingle && std::nextafter(downSingle, upSingle) != upSingle))) {
            std::abort();
        }
    }
    for (int mode : keys) {
        double fast = ubx_atof(text.data(), mode);
        double exact = ExactRoadAtof(text.data(), mode);
        float fastSingle = ubx_strtof(text.data(), nullptr, mode);
        float exactSingle = ExactRoadStrtof(text.data(), mode);
        if (std::memcmp(&fast, &exact, sizeof fast) != 0 || std::memcmp(&fastSingle, &exactSingle, sizeof fastSingle) != 0) {
            std::abort();
        }
    }
    (void)single;
    (void)pair;
    uint32_t state = kScannerStart;
    for (size_t i = 0; i < size; ++i) {
        state = _rfrscan_transition[state][_RFRCharClass[data[i]]][0];
        if (state >= static_cast<uint32_t>(kRealScannerStates)) std::abort();
    }
    // And back: the digits of what came out.
    char buffer[64];
    int point, sign;
    if (__cvt_r(value, static_cast<int>(size % 40), &point, &sign, static_cast<int>(size & 1), buffer, sizeof buffer, 0, 0,
                key) == 0 &&
        buffer[sizeof buffer - 1] != 0 && std::strlen(buffer) >= sizeof buffer) {
        std::abort();
    }
    return 0;
}
