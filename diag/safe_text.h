// Text built in a fixed buffer and written with write(2): what a signal handler may use.
// No allocation, no locale, no stdio; a line that does not fit is cut, never overrun.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace diag {

class SafeText {
public:
    SafeText(char* buffer, size_t capacity) : buffer_(buffer), capacity_(capacity) {}

    SafeText& Text(const char* text) {
        while (text != nullptr && *text != '\0') Char(*text++);
        return *this;
    }
    SafeText& Text(const char* text, size_t length) {
        for (size_t i = 0; i < length; ++i) Char(text[i]);
        return *this;
    }
    SafeText& Char(char c) {
        if (length_ < capacity_) buffer_[length_++] = c;
        return *this;
    }
    SafeText& Decimal(int64_t value) {
        uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
        if (value < 0) Char('-');
        return Unsigned(magnitude);
    }
    SafeText& Unsigned(uint64_t value) {
        char digits[20];
        int count = 0;
        do {
            digits[count++] = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value != 0);
        while (count > 0) Char(digits[--count]);
        return *this;
    }
    // "0x" and the address in as many digits as an address has.
    SafeText& Address(uintptr_t value) {
        Text("0x");
        for (int shift = static_cast<int>(sizeof value * 8) - 4; shift >= 0; shift -= 4) {
            Char("0123456789abcdef"[(value >> shift) & 0xF]);
        }
        return *this;
    }
    SafeText& Hex(uint32_t value, int digits) {
        for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) Char("0123456789abcdef"[(value >> shift) & 0xF]);
        return *this;
    }

    const char* data() const { return buffer_; }
    size_t size() const { return length_; }
    void Clear() { length_ = 0; }

    // The whole text to the descriptor, through interruptions and short writes.
    void WriteTo(int fd) const {
        size_t done = 0;
        while (done < length_) {
            ssize_t wrote = ::write(fd, buffer_ + done, length_ - done);
            if (wrote > 0) {
                done += static_cast<size_t>(wrote);
            } else if (wrote < 0 && errno == EINTR) {
                continue;
            } else {
                return;
            }
        }
    }

private:
    char* buffer_;
    size_t capacity_;
    size_t length_ = 0;
};

}  // namespace diag
