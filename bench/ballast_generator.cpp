// Writes, on standard output, the assembly of a large program's worth of functions with
// their line-table entries: `functions` functions of `rows` lines each, spread over 64
// source files. The traceback benchmark links it first, so that its own lines are found
// only behind all of these.
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: ballast_generator functions rows\n");
        return 2;
    }
    long functions = std::atol(argv[1]);
    int rows = std::atoi(argv[2]);
    std::printf("\t.text\n");
    for (int file = 1; file <= 64; ++file) std::printf("\t.file %d \"ballast/source_%02d.cpp\"\n", file, file);
    for (long i = 0; i < functions; ++i) {
        int file = 1 + static_cast<int>(i % 64);
        long line = 10 + (i / 64) * (rows + 3);
        std::printf("\t.globl ballast_function_%ld\n\t.type ballast_function_%ld, @function\nballast_function_%ld:\n", i,
                    i, i);
        for (int r = 0; r < rows; ++r) std::printf("\t.loc %d %ld\n\taddl $%d, %%eax\n", file, line + r, r + 1);
        std::printf("\tret\n\t.size ballast_function_%ld, .-ballast_function_%ld\n", i, i);
    }
    std::printf("\t.section .note.GNU-stack,\"\",@progbits\n");
    return 0;
}
