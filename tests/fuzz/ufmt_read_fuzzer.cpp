// Fuzzes unformatted input: random bytes as a sequential, direct or stream file, read by
// statements of random items, give values or numbered errors, never a fault, a leak or a
// store outside an item. Each item lies in a block of its exact size, so that the address
// sanitizer sees any byte stored behind it. The program recovers from every error.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vrn90.h"

namespace {

struct Connection {
    uint32_t version = 1;
    uint32_t count = 4;
    KeywordEntry entries[4];
};

// The location the compiler sends first, then POS=.
struct Position {
    uint32_t version = 1;
    uint32_t count = 3;
    KeywordEntry line{VRN_KEY_MSGLINE, 1, 0};
    KeywordEntry file{VRN_KEY_MSGFILE, reinterpret_cast<uintptr_t>("f.f"), 3};
    KeywordEntry position{VRN_KEY_POS, 1, 0};
};

std::string FilePath() {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/vrn_ufmt_fuzz_" + std::to_string(getpid());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    static bool started = false;
    static const std::string path = FilePath();
    if (!started) {
        setrteopts_("err_recovery=yes:vrq_messages=no:ufmt_littleendian=51", 53);
        started = true;
    }
    uint32_t flags = data[0];
    FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(data + 3, 1, size - 3, file);
    std::fclose(file);

    // Unit 50 in the machine's order, 51 swapped; sequential, direct with RECL 1 to 16, or stream.
    int32_t unit = 50 + static_cast<int32_t>(flags & 1u);
    uint32_t access = (flags >> 1) % 3;
    alignas(8) Connection open;
    open.entries[0] = KeywordEntry{VRN_KEY_FILE, reinterpret_cast<uintptr_t>(path.c_str()),
                                   static_cast<uint32_t>(path.size())};
    open.entries[1] = KeywordEntry{VRN_KEY_FORM, 0, VRN_KEY_UNFORMATTED};
    open.entries[2] = KeywordEntry{VRN_KEY_ACCESS, 0,
                                   access == 0 ? VRN_KEY_SEQUENTIAL : access == 1 ? VRN_KEY_DIRECT : VRN_KEY_STREAM};
    open.entries[3] = KeywordEntry{VRN_KEY_RECL, 1 + ((flags >> 3) & 15u), 0};
    open.count = access == 1 ? 4 : 3;
    int32_t iostat = 0;
    if (_vrnIOCmd(unit, VRN_COMMAND_OPEN, reinterpret_cast<const KeywordList*>(&open), 0, &iostat) != 0) return 0;

    uint32_t statementAccess = access == 1 ? VRN_ACCESS_DIRECT : access == 2 ? VRN_ACCESS_STREAM : VRN_ACCESS_SEQUENTIAL;
    uint32_t read = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_READ, statementAccess);
    alignas(8) Position at;
    uint32_t choices = static_cast<uint32_t>(data[1]) | static_cast<uint32_t>(data[2]) << 8;
    for (int32_t statement = 0; statement < 3; ++statement) {
        at.position.a = 1 + ((choices >> (statement * 3)) & 7u);
        int32_t record = 1 + static_cast<int32_t>((choices >> statement) & 3u);
        LocalContext* context = _vrnBeginIO(&unit, read, access == 2 ? reinterpret_cast<const KeywordList*>(&at) : nullptr,
                                            VRN_OPTION_END, &iostat, record, nullptr);
        for (int32_t i = 0; i < 4; ++i) {
            static const int32_t kinds[] = {1, 2, 4, 8, 16, 4, 8, 3};
            uint32_t pick = (choices >> (i * 3 + statement)) & 7u;
            int32_t kind = kinds[pick];
            int32_t type = pick == 5 ? 5 : pick == 7 ? 2 : pick == 4 ? 4 : 0;
            int32_t length = type == 5 ? 2 * kind : kind;
            uint32_t word = static_cast<uint32_t>(type) | ((choices & 0x8000u) && type != 5 ? VRN_UFMT_RUN : 0u);
            if (word & VRN_UFMT_RUN) length *= 3;
            void* item = std::malloc(static_cast<size_t>(length));
            _vrnReadUfmt(context, item, &length, &kind, word);
            std::free(item);
        }
        _vrnEndIO(context);
    }
    _vrnIOCmd(unit, VRN_COMMAND_CLOSE, nullptr, 0, &iostat);
    return 0;
}
