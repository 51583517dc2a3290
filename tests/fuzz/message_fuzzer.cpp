// Fuzzes the message composer: any catalogue text with any "$" sequences, into any room.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "core/errors.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    int32_t capacity = data[0];  // a small room, to test the bound
    std::vector<char> text(data + 1, data + size);
    text.push_back(0);
    const MessageArgument arguments[] = {
        {ArgText(1), 0, "file name"}, {ArgInt(1), -2147483647 - 1, nullptr}, {ArgInt64(2), INT64_MIN, nullptr},
        {ArgErrno(3), 99999, nullptr}, {ArgText(255), 0, ""},
    };
    std::vector<char> out(static_cast<size_t>(capacity) + 1);
    int32_t length = SubstituteArguments(out.data(), capacity, text.data(), arguments, 5);
    if (length < 0 || length > capacity) std::abort();
    return 0;
}
