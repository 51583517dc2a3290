// Decimal conversion beside std::to_chars / std::from_chars and glibc's snprintf / strtod.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "convert/convert.h"

namespace {

const std::vector<double>& Values() {
    static const std::vector<double> values = [] {
        std::mt19937_64 random(1);
        std::uniform_real_distribution<double> exponent(-30, 30);
        std::vector<double> v(4096);
        for (double& x : v) x = std::pow(10.0, exponent(random)) * (random() % 2 ? 1 : -1);
        return v;
    }();
    return values;
}

const std::vector<std::string>& Texts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> t;
        char buffer[64];
        for (double x : Values()) {
            std::snprintf(buffer, sizeof buffer, "%.17g", x);
            t.emplace_back(buffer);
        }
        return t;
    }();
    return texts;
}

void Ours17Digits(benchmark::State& state) {
    char buffer[64];
    int point, sign;
    size_t i = 0;
    for (auto _ : state) {
        __cvt_r(Values()[i++ & 4095], 17, &point, &sign, 1, buffer, sizeof buffer, 1, 0, kRoundNearest);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(Ours17Digits);

void ToChars17Digits(benchmark::State& state) {
    char buffer[64];
    size_t i = 0;
    for (auto _ : state) {
        std::to_chars(buffer, buffer + sizeof buffer, Values()[i++ & 4095], std::chars_format::scientific, 16);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(ToChars17Digits);

void Snprintf17Digits(benchmark::State& state) {
    char buffer[64];
    size_t i = 0;
    for (auto _ : state) {
        std::snprintf(buffer, sizeof buffer, "%.16e", Values()[i++ & 4095]);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(Snprintf17Digits);

void OursFixed6(benchmark::State& state) {
    char buffer[64];
    int point, sign;
    size_t i = 0;
    for (auto _ : state) {
        __cvt_r(Values()[i++ & 4095], 6, &point, &sign, 0, buffer, sizeof buffer, 1, 0, kRoundNearest);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(OursFixed6);

void ToCharsFixed6(benchmark::State& state) {
    char buffer[128];
    size_t i = 0;
    for (auto _ : state) {
        std::to_chars(buffer, buffer + sizeof buffer, Values()[i++ & 4095], std::chars_format::fixed, 6);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(ToCharsFixed6);

void SnprintfFixed6(benchmark::State& state) {
    char buffer[128];
    size_t i = 0;
    for (auto _ : state) {
        std::snprintf(buffer, sizeof buffer, "%.6f", Values()[i++ & 4095]);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(SnprintfFixed6);

// Texts that lie on a rounding boundary or next to one: exactly representable decimals
// of 17 to 25 digits and halfway cases between neighbours, where the double-double cannot
// decide and an exact comparison does.
const std::vector<std::string>& HardTexts() {
    static const std::vector<std::string> texts = [] {
        std::mt19937_64 random(2);
        std::vector<std::string> t;
        char buffer[64];
        while (t.size() < 4096) {
            // m 2^j, or the midpoint (2m + 1) 2^(j-1) between it and its neighbour: whole
            // numbers of up to 23 digits, printed exactly.
            unsigned __int128 m = (random() >> 11) | (uint64_t{1} << 52);
            int j = 1 + static_cast<int>(random() % 20);
            unsigned __int128 v = t.size() % 2 == 0 ? m << j : (2 * m + 1) << (j - 1);
            char digits[48];
            int n = 0;
            for (; v > 0; v /= 10) digits[n++] = static_cast<char>('0' + static_cast<int>(v % 10));
            for (int k = 0; k < n; ++k) buffer[k] = digits[n - 1 - k];
            buffer[n] = 0;
            t.emplace_back(buffer);
        }
        return t;
    }();
    return texts;
}

// Each parser over a set of 4,096 texts.
using TextSet = const std::vector<std::string>& (*)();

template <TextSet texts>
void OursAtofOver(benchmark::State& state) {
    size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(ubx_atof(texts()[i++ & 4095].c_str(), kRoundNearest));
}

// The directed modes in turn, UP, DOWN, ZERO, each for a pass over the texts, as a
// statement's mode stays put.
template <TextSet texts>
void OursAtofDirectedOver(benchmark::State& state) {
    const int keys[3] = {kRoundUp, kRoundDown, kRoundZero};
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(ubx_atof(texts()[i & 4095].c_str(), keys[(i >> 12) % 3]));
        ++i;
    }
}

template <TextSet texts>
void StrtodOver(benchmark::State& state) {
    size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(std::strtod(texts()[i++ & 4095].c_str(), nullptr));
}

template <TextSet texts>
void FromCharsOver(benchmark::State& state) {
    size_t i = 0;
    double value;
    for (auto _ : state) {
        const std::string& text = texts()[i++ & 4095];
        std::from_chars(text.data(), text.data() + text.size(), value);
        benchmark::DoNotOptimize(value);
    }
}

// REAL(4) values printed to nine digits, the most a float needs.
const std::vector<std::string>& FloatTexts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> t;
        char buffer[64];
        for (double x : Values()) {
            std::snprintf(buffer, sizeof buffer, "%.9g", static_cast<double>(static_cast<float>(x)));
            t.emplace_back(buffer);
        }
        return t;
    }();
    return texts;
}

void OursStrtof(benchmark::State& state) {
    size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(ubx_strtof(FloatTexts()[i++ & 4095].c_str(), nullptr, kRoundNearest));
}
BENCHMARK(OursStrtof);

void FromCharsFloat(benchmark::State& state) {
    size_t i = 0;
    float value;
    for (auto _ : state) {
        const std::string& text = FloatTexts()[i++ & 4095];
        std::from_chars(text.data(), text.data() + text.size(), value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(FromCharsFloat);

BENCHMARK(OursAtofOver<HardTexts>)->Name("OursAtofHard");
BENCHMARK(StrtodOver<HardTexts>)->Name("StrtodHard");
BENCHMARK(FromCharsOver<HardTexts>)->Name("FromCharsHard");
BENCHMARK(OursAtofOver<Texts>)->Name("OursAtof");
BENCHMARK(OursAtofDirectedOver<Texts>)->Name("OursAtofDirected");
BENCHMARK(FromCharsOver<Texts>)->Name("FromChars");
BENCHMARK(StrtodOver<Texts>)->Name("Strtod");

}  // namespace

BENCHMARK_MAIN();
