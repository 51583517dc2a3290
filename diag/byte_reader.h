// Reads the fields of ELF and DWARF data in the file's byte order, never past its end.
// A read past the end yields zeros and leaves the reader failed, so that a damaged object
// can be walked without a check at every field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace diag {

struct ByteView {
    const uint8_t* data = nullptr;
    size_t size = 0;

    bool empty() const { return size == 0; }
    // The part [offset, offset + length), or an empty view when it is not all inside.
    ByteView Part(uint64_t offset, uint64_t length) const {
        if (offset > size || length > size - offset) return {};
        return {data + offset, static_cast<size_t>(length)};
    }
};

class ByteReader {
public:
    ByteReader(ByteView view, bool bigEndian) : view_(view), bigEndian_(bigEndian) {}

    bool ok() const { return ok_; }
    bool AtEnd() const { return position_ >= view_.size; }
    size_t position() const { return position_; }
    size_t remaining() const { return view_.size - position_; }
    void Seek(size_t position) {
        if (position > view_.size) {
            ok_ = false;
            position = view_.size;
        }
        position_ = position;
    }
    void Skip(uint64_t count) {
        if (count > remaining()) {
            ok_ = false;
            position_ = view_.size;
        } else {
            position_ += static_cast<size_t>(count);
        }
    }
    const uint8_t* here() const { return view_.data + position_; }

    uint8_t U8() { return static_cast<uint8_t>(Unsigned(1)); }
    uint16_t U16() { return static_cast<uint16_t>(Unsigned(2)); }
    uint32_t U32() { return static_cast<uint32_t>(Unsigned(4)); }
    uint64_t U64() { return Unsigned(8); }
    // An unsigned field of 1 to 8 bytes.
    uint64_t Unsigned(int bytes) {
        if (bytes < 1 || bytes > 8 || remaining() < static_cast<size_t>(bytes)) {
            ok_ = false;
            position_ = view_.size;
            return 0;
        }
        uint64_t value = 0;
        const uint8_t* p = here();
        for (int i = 0; i < bytes; ++i) {
            int shift = bigEndian_ ? 8 * (bytes - 1 - i) : 8 * i;
            value |= static_cast<uint64_t>(p[i]) << shift;
        }
        position_ += static_cast<size_t>(bytes);
        return value;
    }
    uint64_t Uleb() {
        uint64_t value = 0;
        for (int shift = 0;; shift += 7) {
            if (AtEnd()) {
                ok_ = false;
                return value;
            }
            uint8_t byte = view_.data[position_++];
            if (shift < 64) value |= static_cast<uint64_t>(byte & 0x7F) << shift;
            if (!(byte & 0x80)) return value;
        }
    }
    int64_t Sleb() {
        uint64_t value = 0;
        int shift = 0;
        uint8_t byte = 0;
        do {
            if (AtEnd()) {
                ok_ = false;
                return static_cast<int64_t>(value);
            }
            byte = view_.data[position_++];
            if (shift < 64) value |= static_cast<uint64_t>(byte & 0x7F) << shift;
            shift += 7;
        } while (byte & 0x80);
        if (shift < 64 && (byte & 0x40)) value |= ~uint64_t{0} << shift;
        return static_cast<int64_t>(value);
    }
    // A NUL-terminated string inside the view; null when it runs off the end.
    const char* CString() {
        const uint8_t* start = here();
        const void* nul = std::memchr(start, 0, remaining());
        if (nul == nullptr) {
            ok_ = false;
            position_ = view_.size;
            return nullptr;
        }
        position_ += static_cast<size_t>(static_cast<const uint8_t*>(nul) - start) + 1;
        return reinterpret_cast<const char*>(start);
    }

private:
    ByteView view_;
    bool bigEndian_;
    size_t position_ = 0;
    bool ok_ = true;
};

// The NUL-terminated string at `offset` of a string section, or null.
inline const char* StringAt(ByteView section, uint64_t offset) {
    if (offset >= section.size) return nullptr;
    const char* start = reinterpret_cast<const char*>(section.data + offset);
    if (std::memchr(start, 0, section.size - static_cast<size_t>(offset)) == nullptr) return nullptr;
    return start;
}

}  // namespace diag
