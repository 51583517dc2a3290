// A program whose functions' line tables the tests read, built twice, with DWARF 4 and
// DWARF 5. Branches, a loop and an inlined call give the tables many rows.
#include <cstdio>
#include <cstdlib>

static inline int twice(int x) {
    return x * 2;
}

extern "C" __attribute__((noinline)) int subject_branches(int x) {
    int result = 0;
    if (x > 10) {
        result = twice(x);
    } else if (x < -10) {
        result = -x;
    } else {
        for (int i = 0; i < x; ++i) {
            result += i * i;
        }
    }
    return result + 1;
}

extern "C" __attribute__((noinline)) double subject_compute(const double* values, int count) {
    double sum = 0;
    for (int i = 0; i < count; ++i) {
        if (values[i] > 0) {
            sum += values[i];
        } else {
            sum -= values[i] / 2;
        }
    }
    return sum;
}

int main(int argc, char** argv) {
    double values[3] = {1, -2, 3};
    std::printf("%d %g\n", subject_branches(argc > 1 ? std::atoi(argv[1]) : 3), subject_compute(values, 3));
    return 0;
}
