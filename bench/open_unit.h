// A unit connected to a file in TMPDIR for the length of a benchmark iteration; the file
// is removed at the end unless it is kept for reading again.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "vrn90.h"

struct OpenUnit {
    std::string path;
    std::vector<uint64_t> storage;
    int32_t unit = 30;
    bool keep = false;
    explicit OpenUnit(const char* name, bool keepFile = false, bool unformatted = false) : keep(keepFile) {
        const char* directory = std::getenv("TMPDIR");
        path = std::string(directory != nullptr ? directory : "/tmp") + "/" + name;
        storage.assign(8, 0);
        auto* list = reinterpret_cast<KeywordList*>(storage.data());
        list->version = 1;
        list->count = unformatted ? 2 : 1;
        list->entries[1] = KeywordEntry{VRN_KEY_FORM, 0, VRN_KEY_UNFORMATTED};
        list->entries[0] = KeywordEntry{VRN_KEY_FILE, reinterpret_cast<uintptr_t>(path.c_str()),
                                        static_cast<uint32_t>(path.size())};
        _vrnIOCmd(unit, VRN_COMMAND_OPEN, list, 0, nullptr);
    }
    ~OpenUnit() {
        _vrnIOCmd(unit, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
        if (!keep) unlink(path.c_str());
    }
};
