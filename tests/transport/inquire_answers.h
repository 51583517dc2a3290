// One INQUIRE statement that asks every specifier, as compiled code would issue it, and
// the answers its variables received.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <map>
#include <string>

#include "tests/support/fortran.h"

namespace vrntest {

inline constexpr uint32_t kTextSpecifiers[] = {
    VRN_KEY_ACCESS,    VRN_KEY_ACTION,      VRN_KEY_ASYNCHRONOUS, VRN_KEY_BLANK,      VRN_KEY_DECIMAL,
    VRN_KEY_DELIM,     VRN_KEY_DIRECT,      VRN_KEY_ENCODING,     VRN_KEY_FORM,       VRN_KEY_FORMATTED,
    VRN_KEY_NAME,      VRN_KEY_PAD,         VRN_KEY_POSITION,     VRN_KEY_READ,       VRN_KEY_READWRITE,
    VRN_KEY_ROUND,     VRN_KEY_SEQUENTIAL,  VRN_KEY_SIGN,         VRN_KEY_STREAM,     VRN_KEY_UNFORMATTED,
    VRN_KEY_WRITE,
};
inline constexpr uint32_t kIntegerSpecifiers[] = {VRN_KEY_NUMBER, VRN_KEY_RECL, VRN_KEY_NEXTREC, VRN_KEY_SIZE, VRN_KEY_POS};
inline constexpr uint32_t kLogicalSpecifiers[] = {VRN_KEY_EXIST, VRN_KEY_OPENED, VRN_KEY_NAMED, VRN_KEY_PENDING};
inline constexpr int64_t kUntouched = 777;

// Every answer of one INQUIRE: texts with trailing blanks cut, integers (kUntouched when
// the variable was left alone) and logicals.
struct Answers {
    std::map<uint32_t, std::string> text;
    std::map<uint32_t, int64_t> integer;
    std::map<uint32_t, bool> logical;
    int32_t iostat = 0;
    std::string iomsg;
    const std::string& operator[](uint32_t keyword) { return text[keyword]; }
};

// INQUIRE(UNIT=unit, ...) when `file` is null, INQUIRE(FILE=file, ...) otherwise.
// Integers and logicals take the 4-byte tags, or with `wide` the 64-bit forms.
inline Answers Inquire(int32_t unit, const std::string* file, bool wide = false) {
    char texts[std::size(kTextSpecifiers)][300];
    int64_t integers[std::size(kIntegerSpecifiers)];
    int32_t narrowIntegers[std::size(kIntegerSpecifiers)];
    int64_t logicals[std::size(kLogicalSpecifiers)];
    char iomsg[120];
    std::memset(iomsg, ' ', sizeof iomsg);
    Answers answers;
    Specifiers s;
    s.Location("inquire.f", 1).Address(VRN_KEY_IOMSG, iomsg, sizeof iomsg);
    if (file != nullptr) s.Text(VRN_KEY_FILE, *file);
    for (size_t i = 0; i < std::size(kTextSpecifiers); ++i) {
        std::memset(texts[i], '?', sizeof texts[i]);
        s.Address(kTextSpecifiers[i], texts[i], sizeof texts[i]);
    }
    for (size_t i = 0; i < std::size(kIntegerSpecifiers); ++i) {
        integers[i] = kUntouched;
        narrowIntegers[i] = static_cast<int32_t>(kUntouched);
        if (wide) s.Address(VRN_TAG_INQUIRE_INT8, &integers[i], kIntegerSpecifiers[i]);
        else s.Address(kIntegerSpecifiers[i], &narrowIntegers[i]);
    }
    for (size_t i = 0; i < std::size(kLogicalSpecifiers); ++i) {
        logicals[i] = 7;
        if (wide) s.Address(VRN_TAG_INQUIRE_LOG8, &logicals[i], kLogicalSpecifiers[i]);
        else s.Address(kLogicalSpecifiers[i], &logicals[i], 4);
    }
    uint32_t options = file == nullptr ? VRN_OPTION_INQUIRE_BY_UNIT : 0;
    _vrnIOCmd(unit, VRN_COMMAND_INQUIRE, s.list(), options, &answers.iostat);
    for (size_t i = 0; i < std::size(kTextSpecifiers); ++i) {
        std::string value(texts[i], sizeof texts[i]);
        value.erase(value.find_last_not_of(' ') + 1);
        answers.text[kTextSpecifiers[i]] = value;
    }
    for (size_t i = 0; i < std::size(kIntegerSpecifiers); ++i) {
        int64_t value = wide ? integers[i] : narrowIntegers[i];
        answers.integer[kIntegerSpecifiers[i]] = value;
    }
    for (size_t i = 0; i < std::size(kLogicalSpecifiers); ++i) {
        int32_t low;
        std::memcpy(&low, &logicals[i], sizeof low);
        answers.logical[kLogicalSpecifiers[i]] = wide ? logicals[i] == 1 : low == 1;
    }
    answers.iomsg.assign(iomsg, sizeof iomsg);
    answers.iomsg.erase(answers.iomsg.find_last_not_of(' ') + 1);
    return answers;
}

inline Answers ByUnit(int32_t unit, bool wide = false) { return Inquire(unit, nullptr, wide); }
inline Answers ByFile(const std::string& file, bool wide = false) { return Inquire(0, &file, wide); }

// The IOLENGTH= statement: the item calls of an unformatted WRITE, counted and not written.
inline int64_t IOLength(const std::function<void(LocalContext*)>& items, bool wide = false) {
    int64_t length = -5;
    Specifiers s;
    s.Location("f", 1);
    if (wide) s.Address(VRN_TAG_INQUIRE_INT8, &length, VRN_KEY_IOLENGTH);
    else s.Address(VRN_KEY_IOLENGTH, &length);
    LocalContext* context = _vrnBeginIO(nullptr, UfmtWrite, s.list(), 0, nullptr, 0, nullptr);
    items(context);
    EXPECT_EQ(_vrnEndIO(context), 0);
    if (wide) return length;
    int32_t low;
    std::memcpy(&low, &length, sizeof low);
    return low;
}

}  // namespace vrntest
