// The format encoder: one pass over the text, writing the code as it goes.
//
// Every diagnostic goes to the caller's callback, which either lets the encoder repair
// (a bad operand becomes "omitted", a bad descriptor is skipped, an unterminated literal
// is dropped) or stops it. The code is written into chunks: the first is the caller's
// persistent buffer, later ones are allocated and chained by Cont records, and a
// compile-time call packs a chain into one block at the end.
#include <cctype>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "format/descriptor_table.h"
#include "format/encoded_format.h"

namespace {

enum Kind : int { kAbsent = 0, kConstant = 1, kVariable = 2, kOmitted = 3 };

constexpr uint32_t kNoRepeat = 0x8000u;
constexpr uint32_t kRepeat = 0x8004u;
constexpr uint32_t kLevelBits = VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90 | VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95 |
                                VRN_FMT_LEVEL_F2003 | VRN_FMT_LEVEL_F2008;
constexpr int32_t kGoing = 1;

struct Operand {
    int kind;
    int64_t value;  // a constant, or an expression's index
};

// The expression records of the last encoding: one table for the process, grown by copying.
struct ExpressionTable {
    VrnFormatExpression* records;
    int32_t capacity;
    int32_t count;
};
ExpressionTable expressionTable;
constexpr int32_t kExpressionGrowth = 1024;

FormatCodeBuffer compileBuffer32;
FormatCodeBuffer compileBuffer64;

// A byte buffer for the DT type string and v-list: on the stack until it outgrows it.
class ScratchBytes {
public:
    ~ScratchBytes() {
        if (data_ != inline_) std::free(data_);
    }
    bool Append(const void* bytes, int32_t count) {
        if (length_ + count > capacity_ && !Grow(length_ + count)) return false;
        std::memcpy(data_ + length_, bytes, count);
        length_ += count;
        return true;
    }
    uint8_t* data() { return data_; }
    int32_t length() const { return length_; }

private:
    bool Grow(int32_t need) {
        int32_t capacity = capacity_;
        while (capacity < need) capacity *= 2;
        void* grown = data_ == inline_ ? std::malloc(capacity) : std::realloc(data_, capacity);
        if (grown == nullptr) return false;
        if (data_ == inline_) std::memcpy(grown, inline_, length_);
        data_ = static_cast<uint8_t*>(grown);
        capacity_ = capacity;
        return true;
    }
    uint8_t inline_[1024];
    uint8_t* data_ = inline_;
    int32_t length_ = 0;
    int32_t capacity_ = sizeof inline_;
};

template <class Unit>
struct EncodingTraits;

template <>
struct EncodingTraits<int32_t> {
    static constexpr int32_t kContReserve = 3;
    static constexpr int32_t kInitialFlags = VRN_FMT_CONTIGUOUS;
    static constexpr int64_t kOperandMax = INT32_MAX;
    static const DescDefaultRow* Table() { return DescDefaultTable; }
};

template <>
struct EncodingTraits<int64_t> {
    static constexpr int32_t kContReserve = 2;
    static constexpr int32_t kInitialFlags = VRN_FMT_CONTIGUOUS | VRN_FMT_ENCODING64;
    static constexpr int64_t kOperandMax = INT64_MAX;
    static const DescDefaultRow* Table() { return DescDefaultTable64; }
};

template <class Unit>
void FreeChainFrom(Unit* cont, const Unit* last) {
    // Reads each link before freeing the chunk that holds the next Cont.
    Unit* next = ContTarget(cont);
    int32_t position = static_cast<int32_t>(cont[2]);
    while (next != nullptr) {
        if (next == last) {
            std::free(next);
            return;
        }
        Unit* nextCont = next + position;
        Unit* after = ContTarget(nextCont);
        int32_t afterPosition = static_cast<int32_t>(nextCont[2]);
        std::free(next);
        next = after;
        position = afterPosition;
    }
}

template <class Unit>
class Encoder {
    using Traits = EncodingTraits<Unit>;
    static constexpr int32_t kUnitBytes = sizeof(Unit);

public:
    Encoder(const char* text, int32_t length, uint32_t flags, VrnFormatCallback callback, FormatCodeBuffer* buffer)
        : text_(reinterpret_cast<const uint8_t*>(text)),
          length_(length > 0 && text != nullptr ? length : 0),
          flags_(flags),
          callback_(callback),
          buffer_(buffer),
          table_(Traits::Table()),
          classes_(*__ctype_b_loc()),
          lower_(*__ctype_tolower_loc()) {}

    intptr_t Run(EncodedResult* result);

private:
    // ---- diagnostics ----
    bool Stopped() const { return stop_ != kGoing; }

    bool Report(int code, int64_t a = 0, int64_t b = 0, int64_t c = 0) {
        if (Stopped()) return false;
        intptr_t number = descriptorCount_ + (building_ ? 1 : 0);
        intptr_t position = atRepeat_ ? repeatPosition_ : descriptorPosition_;
        intptr_t answer = callback_ == nullptr
                              ? 1
                              : callback_(code, number, position, virtualCode_, static_cast<intptr_t>(a),
                                          static_cast<intptr_t>(b), static_cast<intptr_t>(c), 0);
        if (answer == 1) return true;
        stop_ = answer;
        return false;
    }

    void OutOfMemory() {
        Report(36);
        stop_ = 0;
    }

    bool LevelCheck() {
        int code = (flags_ & VRN_FMT_LEVEL_F2008)                          ? 50
                   : (flags_ & VRN_FMT_LEVEL_F2003)                        ? 46
                   : (flags_ & (VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95))    ? 28
                   : (flags_ & VRN_FMT_LEVEL_F77)                          ? 27
                                                                           : 29;
        return Report(code);
    }

    // ---- text ----
    // Blanks are insignificant and case does not matter, by the C library's tables of the
    // current locale, read directly: this is the encoder's innermost loop.
    int Peek() {
        while (cursor_ < length_ && (classes_[text_[cursor_]] & _ISspace)) ++cursor_;
        return cursor_ < length_ ? lower_[text_[cursor_]] : -1;
    }
    int Take() {
        int c = Peek();
        if (c != -1) ++cursor_;
        return c;
    }
    static bool IsDigit(int c) { return c >= '0' && c <= '9'; }
    static bool IsSeparator(int c) { return c == -1 || c == ',' || c == ')' || c == '/' || c == ':'; }

    void SkipToNextSeparator() {
        for (int c = Peek(); !IsSeparator(c) && c != '(' && c != '\'' && c != '"'; c = Peek()) ++cursor_;
    }

    int32_t MbCharLen() {
        if (!(flags_ & VRN_FMT_MULTIBYTE)) return 1;
        size_t limit = MB_CUR_MAX;
        size_t left = static_cast<size_t>(length_ - cursor_);
        int length;
        if (left >= limit) {
            length = std::mblen(reinterpret_cast<const char*>(text_ + cursor_), limit);
        } else {
            char padded[MB_LEN_MAX] = {};
            std::memcpy(padded, text_ + cursor_, left);
            length = std::mblen(padded, limit);
        }
        return length > 1 ? length : 1;
    }

    // ---- operands ----
    int GetOperand(int64_t* value, int operandIndex);
    int GetSignedOperand(int64_t* value, int width, int operandIndex);
    int DoExpression(int64_t* value, int operandIndex);
    void Getw();
    void Getwd();
    void Getwde(const char* letters);
    bool IsExponent();
    bool InRange(int code, int operand, int64_t value) const {
        const DescDefaultRow& row = table_[code];
        return operand < row.rangeCount && value >= row.ranges[operand].minimum &&
               value <= row.ranges[operand].maximum;
    }
    void CheckWidth(int code);
    void CheckDValue(int code, bool allowOmitted);
    void CheckWDEValues();
    bool CompileTime() const { return (flags_ & VRN_FMT_COMPILE_TIME) != 0; }

    // ---- code space ----
    int32_t SpaceLeft() const { return capacity_ - Traits::kContReserve - position_; }
    bool ExpandFormatSpace(int64_t need);
    bool Ensure(int32_t units) { return SpaceLeft() >= units || ExpandFormatSpace(units); }
    void Emit(uint32_t code, std::initializer_list<Operand> operands);
    void EmitData(uint32_t code, int operandCount);
    void NoteExpression(int64_t index, int64_t byteOffset);
    void EmitNoOp(int64_t expressionIndex);

    // ---- repeats ----
    void DoRepeat();
    void CheckRepeatRange();
    void RepeatNotAllowed();
    bool HasRepeat() const { return pending_ == kRepeat; }
    // P, X and H take the repeat as their operand: it is no Repeat op.
    bool TakeRepeat(Operand* operand) {
        bool had = HasRepeat();
        *operand = repeat_;
        pending_ = kNoRepeat;
        repeat_ = {};
        return had;
    }
    // Steps over the text of an operand, digits or "<...>", for a look ahead.
    void SkipOperandText() {
        int c = Peek();
        if (IsDigit(c)) {
            while (IsDigit(Peek())) ++cursor_;
        } else if (c == '<') {
            const void* close = std::memchr(text_ + cursor_, '>', length_ - cursor_);
            if (close != nullptr) cursor_ = static_cast<int32_t>(static_cast<const uint8_t*>(close) - text_) + 1;
        }
    }

    // ---- descriptors ----
    void Dispatch(int c);
    void SeparatorCheck();
    void DoIwm(int code, int codeWithM);
    void DoFwd(int code);
    void DoEwde(int code, int codeD, int codeE, int codeQ, const char* letters);
    void DoA();
    void DoB();
    void DoD();
    void DoE();
    void DoL();
    void DoP();
    void DoQ();
    void DoR();
    void DoS();
    void DoT();
    void DoX();
    void DoDollar();
    void DoHollerith();
    void DoDT();
    void ApplyPCommaRules();
    void SimpleControl(int code, int virtualCode);

    // ---- literals ----
    struct Mark {
        Unit* chunk;
        int32_t position;
        int32_t capacity;
        int32_t logical;
        Unit flags;
        Unit* previousCont;
        Unit* firstCont;
    };
    Mark Save() {
        markCont_ = nullptr;
        return {chunk_, position_, capacity_, logical_, header()[VRN_FMT_HEADER_FLAGS], previousCont_, firstCont_};
    }
    void DropSince(const Mark& mark);
    bool ReadQuoted(int delimiter, ScratchBytes* out);
    int TakeLiteralChar(uint8_t* bytes);
    void GenStringCode(int delimiter, int code);
    void GenHCode(int64_t count);
    void BeginPiece();
    void AppendBytes(const uint8_t* bytes, int32_t count);
    void EndPiece();

    // ---- whole ----
    bool InitializeEncode();
    void MismatchParentheses();
    void NormalWrapUp();
    void PackFormat();
    void ErrorWrapUp();
    Unit* header() const { return base_; }

    const uint8_t* text_;
    int32_t length_;
    int32_t cursor_ = 0;
    uint32_t flags_;
    VrnFormatCallback callback_;
    FormatCodeBuffer* buffer_;
    const DescDefaultRow* table_;
    const unsigned short* classes_;
    const int32_t* lower_;
    intptr_t stop_ = kGoing;

    int virtualCode_ = 0;
    uint32_t pending_ = kNoRepeat;
    Operand repeat_{};
    Operand w_{}, d_{}, e_{};
    bool sawDot_ = false;
    int letter_ = 0;
    int32_t repeatPosition_ = 0;
    int32_t descriptorPosition_ = 0;
    bool atRepeat_ = false;
    bool building_ = false;
    int separator_ = 1;
    int32_t depth_ = 0;
    int32_t maxDepth_ = 0;
    int32_t descriptorCount_ = 0;

    Unit* base_ = nullptr;      // the first chunk: the caller's buffer
    Unit* chunk_ = nullptr;     // the chunk being written
    int32_t position_ = 0;      // units written in it
    int32_t capacity_ = 0;      // its size in units
    int32_t logical_ = 0;       // units of the code without Cont records: header unit 1
    Unit* previousCont_ = nullptr;  // the Cont that leads to the current chunk
    Unit* firstCont_ = nullptr;
    Unit* markCont_ = nullptr;      // the first Cont written since the last Save
    Unit* piece_ = nullptr;     // the string op being filled
    int32_t pieceBytes_ = 0;
    int32_t pieceCapacity_ = 0;
    uint32_t pieceCode_ = 0;
    Unit* result_ = nullptr;
};

// ---- operands ----------------------------------------------------------------------

template <class Unit>
int Encoder<Unit>::GetOperand(int64_t* value, int operandIndex) {
    int c = Peek();
    if (IsDigit(c)) {
        constexpr int64_t kMax = Traits::kOperandMax;
        int64_t accumulated = 0;
        bool tooLarge = false;
        for (; IsDigit(c); c = Peek()) {
            ++cursor_;
            int digit = c - '0';
            if (tooLarge) continue;
            if (accumulated > kMax / 10 || (accumulated == kMax / 10 && digit > kMax % 10)) {
                tooLarge = true;
            } else {
                accumulated = accumulated * 10 + digit;
            }
        }
        if (tooLarge) {
            Report(43);
            return kOmitted;
        }
        *value = accumulated;
        return kConstant;
    }
    if (c == '<' && (flags_ & VRN_FMT_EXPRESSIONS)) return DoExpression(value, operandIndex);
    return kOmitted;
}

template <class Unit>
int Encoder<Unit>::DoExpression(int64_t* value, int operandIndex) {
    int32_t open = cursor_;
    const void* close = std::memchr(text_ + open + 1, '>', length_ - open - 1);
    if (close == nullptr) {
        cursor_ = length_;
        Report(37, operandIndex);
        return kOmitted;
    }
    int32_t end = static_cast<int32_t>(static_cast<const uint8_t*>(close) - text_);
    ExpressionTable& table = expressionTable;
    if (table.count == table.capacity) {
        int32_t capacity = table.capacity + kExpressionGrowth;
        auto* grown = static_cast<VrnFormatExpression*>(std::malloc(capacity * sizeof(VrnFormatExpression)));
        if (grown == nullptr) {
            OutOfMemory();
            return kOmitted;
        }
        if (table.count > 0) std::memcpy(grown, table.records, table.count * sizeof(VrnFormatExpression));
        std::free(table.records);
        table.records = grown;
        table.capacity = capacity;
    }
    VrnFormatExpression& record = table.records[table.count];
    record.textPosition = open + 1;
    record.textLength = end - open + 1;
    record.byteOffset = -1;  // known when the op is written
    record.operandIndex = operandIndex;
    record.descriptorNumber = descriptorCount_ + 1;
    record.descriptorPosition = descriptorPosition_;
    *value = table.count++;
    cursor_ = end + 1;
    return kVariable;
}

template <class Unit>
int Encoder<Unit>::GetSignedOperand(int64_t* value, int width, int operandIndex) {
    int c = Peek();
    bool negative = false;
    bool sign = c == '+' || c == '-';
    if (sign) {
        negative = c == '-';
        ++cursor_;
        c = Peek();
    }
    if (c == '<' && (flags_ & VRN_FMT_EXPRESSIONS)) {
        if (sign && !Report(38)) return kAbsent;
        return DoExpression(value, operandIndex);
    }
    if (!IsDigit(c)) return kAbsent;
    // Accumulated as a magnitude up to 2^63, so that the most negative value fits.
    uint64_t magnitude = 0;
    bool tooLarge = false;
    for (; IsDigit(c); c = Peek()) {
        ++cursor_;
        unsigned digit = static_cast<unsigned>(c - '0');
        if (magnitude > (UINT64_MAX - digit) / 10) tooLarge = true;
        else magnitude = magnitude * 10 + digit;
    }
    uint64_t limit = width == 2 ? 32767u : width == 4 ? 2147483647u : static_cast<uint64_t>(INT64_MAX);
    if (tooLarge || magnitude > limit + (negative ? 1 : 0)) {
        *value = 0;
        Report(43);
        return kConstant;
    }
    *value = negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
    return kConstant;
}

template <class Unit>
void Encoder<Unit>::Getw() {
    w_.kind = GetOperand(&w_.value, 0);
    if (w_.kind == kOmitted) w_.kind = kAbsent;
    d_ = e_ = Operand{};
    sawDot_ = false;
    letter_ = 0;
}

template <class Unit>
void Encoder<Unit>::Getwd() {
    w_.kind = GetOperand(&w_.value, 0);
    d_ = e_ = Operand{};
    letter_ = 0;
    sawDot_ = !Stopped() && Peek() == '.';
    if (sawDot_) {
        ++cursor_;
        d_.kind = GetOperand(&d_.value, 1);
    }
}

template <class Unit>
bool Encoder<Unit>::IsExponent() {
    // cursor_ stands on the "q": it is an exponent letter only when an operand and then
    // the end of the item follow.
    int32_t saved = cursor_;
    ++cursor_;
    int32_t start = cursor_;
    SkipOperandText();
    bool operand = cursor_ != start && (IsDigit(text_[cursor_ - 1]) || text_[cursor_ - 1] == '>');
    bool result = operand && IsSeparator(Peek());
    cursor_ = saved;
    return result;
}

template <class Unit>
void Encoder<Unit>::Getwde(const char* letters) {
    Getwd();
    if (Stopped()) return;
    int c = Peek();
    if (c <= 0 || std::strchr(letters, c) == nullptr) return;
    if (c == 'q' && (flags_ & VRN_FMT_Q_COUNT) && !IsExponent()) return;
    ++cursor_;
    letter_ = c;
    e_.kind = GetOperand(&e_.value, 2);
}

template <class Unit>
void Encoder<Unit>::CheckWidth(int code) {
    if (w_.kind == kConstant) {
        if (!InRange(code, 0, w_.value)) {
            int64_t bad = w_.value;
            w_ = {kOmitted, 0};
            Report(21, bad);
        } else if (w_.value == 0 && (flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90 | VRN_FMT_LEVEL_F90)) &&
                   table_[code].zeroWidthError) {
            Report(45);
        }
    } else if (w_.kind == kOmitted) {
        Report(9);
    }
}

template <class Unit>
void Encoder<Unit>::CheckDValue(int code, bool allowOmitted) {
    if (Stopped()) return;
    if (!sawDot_) {
        d_ = {kOmitted, 0};
        if (!allowOmitted) Report(17);
    } else if (d_.kind == kConstant) {
        if (!InRange(code, 1, d_.value)) {
            int64_t bad = d_.value;
            d_ = {kOmitted, 0};
            Report(23, bad);
        }
    } else if (d_.kind == kOmitted) {
        Report(18);
    }
}

template <class Unit>
void Encoder<Unit>::CheckWDEValues() {
    if (Stopped() || !CompileTime() || w_.kind != kConstant) return;
    int64_t w = w_.value;
    bool haveD = d_.kind == kConstant;
    bool haveE = e_.kind == kConstant;
    if (haveD && w != 0 && w < d_.value) {
        Report(32, w, d_.value);
    } else if (haveE && w < e_.value) {
        Report(33, w, e_.value);
    } else if (haveD && haveE && w < d_.value + e_.value) {
        Report(34, w, d_.value, e_.value);
    }
}

// ---- code space --------------------------------------------------------------------

template <class Unit>
bool Encoder<Unit>::ExpandFormatSpace(int64_t need) {
    if (Stopped()) return false;
    int64_t units = need >= kChunkGrowthUnits ? need + kChunkGrowthUnits : kChunkGrowthUnits;
    if (units > (INT32_MAX - kChunkTailBytes) / kUnitBytes) {
        OutOfMemory();
        return false;
    }
    auto* next = static_cast<Unit*>(std::malloc(units * kUnitBytes + kChunkTailBytes));
    if (next == nullptr) {
        OutOfMemory();
        return false;
    }
    Unit* cont = chunk_ + position_;
    cont[0] = static_cast<Unit>(kContOpWord);
    SetContTarget(cont, next);
    cont[2] = 0;
    if (previousCont_ != nullptr) previousCont_[2] = position_;
    if (firstCont_ == nullptr) firstCont_ = cont;
    if (markCont_ == nullptr) markCont_ = cont;
    previousCont_ = cont;
    header()[VRN_FMT_HEADER_FLAGS] &= ~static_cast<Unit>(VRN_FMT_CONTIGUOUS);
    chunk_ = next;
    position_ = 0;
    capacity_ = static_cast<int32_t>(units);
    return true;
}

template <class Unit>
void Encoder<Unit>::NoteExpression(int64_t index, int64_t byteOffset) {
    if (index >= 0 && index < expressionTable.count) {
        expressionTable.records[index].byteOffset = static_cast<int32_t>(byteOffset);
    }
}

template <class Unit>
void Encoder<Unit>::Emit(uint32_t code, std::initializer_list<Operand> operands) {
    if (Stopped()) return;
    int32_t units = 1 + static_cast<int32_t>(operands.size());
    if (!Ensure(units)) return;
    if (code != kRepeat && code != kNoRepeat) {
        ++descriptorCount_;
        building_ = false;
    }
    Unit* op = chunk_ + position_;
    uint32_t kinds = 0;
    int index = 0;
    for (const Operand& operand : operands) {
        kinds |= static_cast<uint32_t>(operand.kind) << (4 * index);
        bool carried = operand.kind == kConstant || operand.kind == kVariable;
        op[1 + index] = carried ? static_cast<Unit>(operand.value) : 0;
        if (operand.kind == kVariable) NoteExpression(operand.value, int64_t{logical_} * kUnitBytes);
        ++index;
    }
    op[0] = static_cast<Unit>((code << 16) | kinds);
    position_ += units;
    logical_ += units;
}

template <class Unit>
void Encoder<Unit>::EmitData(uint32_t code, int operandCount) {
    switch (operandCount) {
    case 0: Emit(code, {}); break;
    case 1: Emit(code, {w_}); break;
    case 2: Emit(code, {w_, d_}); break;
    default: Emit(code, {w_, d_, e_}); break;
    }
}

// A variable repeat where none may stand keeps its place as a no-op, so that the
// compiler's expression record still finds an op at its offset.
template <class Unit>
void Encoder<Unit>::EmitNoOp(int64_t expressionIndex) {
    if (Stopped() || !Ensure(1)) return;
    NoteExpression(expressionIndex, int64_t{logical_} * kUnitBytes);
    chunk_[position_++] = static_cast<Unit>(0x80000000u);
    ++logical_;
}

// ---- repeats -----------------------------------------------------------------------

template <class Unit>
void Encoder<Unit>::DoRepeat() {
    pending_ = kNoRepeat;
    repeat_ = {};
    int c = Peek();
    repeatPosition_ = cursor_;
    int sign = 0;
    if (c == '+' || c == '-') {
        sign = c;
        ++cursor_;
    }
    atRepeat_ = true;
    int64_t value = 0;
    int kind = GetOperand(&value, 0);
    if (Stopped()) return;
    if (sign != 0) {
        bool bad = kind == kVariable || Peek() != 'p';
        if (bad) {
            virtualCode_ = 2;
            if (kind == kVariable ? Report(38) : Report(14, sign)) {
                SkipToNextSeparator();
                if (Peek() == ',') ++cursor_;
                separator_ = 2;
            }
            atRepeat_ = false;
            pending_ = kNoRepeat;
            repeat_ = {kAbsent, -1};  // marks the pass as skipped
            return;
        }
        if (sign == '-' && kind == kConstant) value = -value;
    }
    atRepeat_ = false;
    if (kind == kConstant || kind == kVariable) {
        pending_ = kRepeat;
        repeat_ = {kind, value};
    }
}

template <class Unit>
void Encoder<Unit>::CheckRepeatRange() {
    if (HasRepeat()) {
        atRepeat_ = true;
        if (repeat_.kind == kConstant && !InRange(VRN_FMT_REPEAT, 0, repeat_.value)) {
            Report(6, repeat_.value);
        } else {
            Emit(kRepeat, {repeat_});
        }
        atRepeat_ = false;
    }
    pending_ = kNoRepeat;
    repeat_ = {};
}

template <class Unit>
void Encoder<Unit>::RepeatNotAllowed() {
    if (HasRepeat()) {
        atRepeat_ = true;
        bool goOn = Report(4, repeat_.value);
        atRepeat_ = false;
        if (goOn && repeat_.kind == kVariable) EmitNoOp(repeat_.value);
    }
    pending_ = kNoRepeat;
    repeat_ = {};
}

// ---- descriptors -------------------------------------------------------------------

template <class Unit>
void Encoder<Unit>::DoIwm(int code, int codeWithM) {
    CheckRepeatRange();
    Getwd();
    if (Stopped()) return;
    CheckWidth(code);
    if (Stopped()) return;
    if (!sawDot_) {
        EmitData(code, 1);
        return;
    }
    if (d_.kind == kConstant) {
        if (InRange(codeWithM, 1, d_.value)) {
            if (CompileTime() && w_.kind == kConstant && w_.value != 0 && d_.value > w_.value) {
                if (!Report(31, w_.value, d_.value)) return;
            }
        } else {
            int64_t bad = d_.value;
            d_ = {kOmitted, 0};
            if (!Report(22, bad)) return;
        }
    } else if (d_.kind == kOmitted) {
        if (!Report(16)) return;
    }
    EmitData(codeWithM, 2);
}

template <class Unit>
void Encoder<Unit>::DoFwd(int code) {
    CheckRepeatRange();
    Getwd();
    if (Stopped()) return;
    CheckWidth(code);
    CheckDValue(code, false);
    CheckWDEValues();
    EmitData(code, 2);
}

template <class Unit>
void Encoder<Unit>::DoEwde(int code, int codeD, int codeE, int codeQ, const char* letters) {
    CheckRepeatRange();
    Getwde(letters);
    if (Stopped()) return;
    bool plainLetters = code == VRN_FMT_EN || code == VRN_FMT_ES;
    if (letter_ != 0 && letter_ != 'e' &&
        (flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95 | VRN_FMT_LEVEL_F2003 |
                   VRN_FMT_LEVEL_F2008))) {
        if (!(flags_ & VRN_FMT_LEVEL_F77)) {
            if (!Report(41, letter_)) return;
        } else if (!plainLetters) {
            if (!Report(40, letter_)) return;
        }
    }
    CheckWidth(code);
    bool generic = code == VRN_FMT_G;
    bool dOptional = generic && !(flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95 |
                                            VRN_FMT_LEVEL_F2003 | VRN_FMT_LEVEL_F2008));
    CheckDValue(code, dOptional);
    if (Stopped()) return;
    if (letter_ != 0) {
        if (e_.kind == kConstant && !InRange(code, 2, e_.value)) {
            int64_t bad = e_.value;
            e_ = {kOmitted, 0};
            if (!Report(24, bad)) return;
        } else if (e_.kind == kOmitted) {
            if (!Report(19)) return;
        }
    }
    CheckWDEValues();
    uint32_t generic16 = generic ? VRN_FMT_GENERIC : 0;
    switch (letter_) {
    case 0: EmitData(generic16 | code, 2); break;
    case 'd': EmitData(generic16 | codeD, 3); break;
    case 'q': EmitData(generic16 | codeQ, 3); break;
    default: EmitData(generic16 | codeE, 3); break;
    }
}

template <class Unit>
void Encoder<Unit>::DoA() {
    virtualCode_ = 28;
    CheckRepeatRange();
    Getw();
    if (Stopped()) return;
    if (w_.kind == kAbsent) {
        EmitData(VRN_FMT_A, 0);
    } else if (w_.kind == kVariable || InRange(VRN_FMT_AW, 0, w_.value)) {
        EmitData(VRN_FMT_AW, 1);
    } else if (Report(21, w_.value)) {
        EmitData(VRN_FMT_A, 0);
    }
}

template <class Unit>
void Encoder<Unit>::DoB() {
    int c = Peek();
    if (c == 'n' || c == 'z') {
        ++cursor_;
        SimpleControl(c == 'n' ? VRN_FMT_BN : VRN_FMT_BZ, c == 'n' ? 5 : 6);
        return;
    }
    virtualCode_ = 17;
    if ((flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90)) && !Report(flags_ & VRN_FMT_LEVEL_F77 ? 27 : 29)) return;
    DoIwm(VRN_FMT_B, VRN_FMT_BM);
}

template <class Unit>
void Encoder<Unit>::DoD() {
    int c = Peek();
    constexpr uint32_t kDecimalLevels = VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90 | VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95;
    if (c == 'c' || c == 'p') {
        ++cursor_;
        virtualCode_ = c == 'c' ? 34 : 35;
        RepeatNotAllowed();
        if ((flags_ & kDecimalLevels) && !LevelCheck()) return;
        Emit(VRN_FMT_CONTROL | (c == 'c' ? VRN_FMT_DC : VRN_FMT_DP), {});
        return;
    }
    if (c == 't') {
        ++cursor_;
        DoDT();
        return;
    }
    virtualCode_ = 20;
    DoFwd(VRN_FMT_D);
}

template <class Unit>
void Encoder<Unit>::DoE() {
    int c = Peek();
    if (c == 'n' || c == 's') {
        ++cursor_;
        virtualCode_ = c == 'n' ? 24 : 25;
        if ((flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90)) && !Report(flags_ & VRN_FMT_LEVEL_F77 ? 27 : 29)) {
            return;
        }
        if (c == 'n') DoEwde(VRN_FMT_EN, VRN_FMT_ENE, VRN_FMT_ENE, VRN_FMT_ENE, "e");
        else DoEwde(VRN_FMT_ES, VRN_FMT_ESE, VRN_FMT_ESE, VRN_FMT_ESE, "e");
        return;
    }
    virtualCode_ = 23;
    DoEwde(VRN_FMT_E, VRN_FMT_ED, VRN_FMT_EE, VRN_FMT_EQ, "edq");
}

template <class Unit>
void Encoder<Unit>::DoL() {
    virtualCode_ = 27;
    CheckRepeatRange();
    Getw();
    if (Stopped()) return;
    if (w_.kind == kAbsent) {
        if (!Report(9)) return;
        w_ = {kConstant, 2};
    } else if (w_.kind == kConstant && (w_.value < 1 || w_.value > 2000)) {
        if (!Report(21, w_.value)) return;
        w_ = {kConstant, 2};
    }
    EmitData(VRN_FMT_L, 1);
}

template <class Unit>
void Encoder<Unit>::DoP() {
    virtualCode_ = 7;
    Operand scale;
    bool had = TakeRepeat(&scale);
    if (!had) {
        if (!Report(10)) return;
        scale = {kConstant, 0};
    } else if (scale.kind == kConstant && !InRange(VRN_FMT_P, 0, scale.value)) {
        if (!Report(11, scale.value)) return;
        scale = {kConstant, 0};
    }
    Emit(VRN_FMT_CONTROL | VRN_FMT_P, {scale});
    ApplyPCommaRules();
}

template <class Unit>
void Encoder<Unit>::ApplyPCommaRules() {
    if (Stopped()) return;
    int c = Peek();
    if (c == ',') {
        separator_ = 0;
        return;
    }
    // A P may stand right in front of the real descriptor it scales; at a standard level
    // only directly, so that no repeat comes between them.
    if (!(flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95 | VRN_FMT_LEVEL_F2003 |
                    VRN_FMT_LEVEL_F2008))) {
        int32_t saved = cursor_;
        SkipOperandText();
        c = Peek();
        cursor_ = saved;
    }
    separator_ = (c == 'd' || c == 'e' || c == 'f' || c == 'g' || c == 'q') ? 2 : 0;
}

template <class Unit>
void Encoder<Unit>::DoQ() {
    constexpr uint32_t kQLevels = kLevelBits;
    bool count = false;
    if (flags_ & VRN_FMT_Q_COUNT) {
        // Q is the character count unless a w and a "." follow.
        int32_t saved = cursor_;
        SkipOperandText();
        count = Peek() != '.';
        cursor_ = saved;
    }
    if (count) {
        virtualCode_ = 29;
        if ((flags_ & kQLevels) && !LevelCheck()) return;
        CheckRepeatRange();
        Emit(VRN_FMT_Q, {});
        return;
    }
    virtualCode_ = 21;
    if ((flags_ & kQLevels) && !LevelCheck()) return;
    DoFwd(VRN_FMT_QWD);
}

template <class Unit>
void Encoder<Unit>::DoR() {
    static constexpr char kLetters[] = "udzncp";
    int c = Peek();
    const char* found = c > 0 ? std::strchr(kLetters, c) : nullptr;
    if (found == nullptr) {
        virtualCode_ = 36;
        RepeatNotAllowed();
        if (Report(14, c < 0 ? 0 : text_[cursor_])) {
            SkipToNextSeparator();
            separator_ = 2;
        }
        return;
    }
    ++cursor_;
    int index = static_cast<int>(found - kLetters);
    virtualCode_ = 36 + index;
    RepeatNotAllowed();
    if ((flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90 | VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95)) &&
        !LevelCheck()) {
        return;
    }
    Emit(VRN_FMT_CONTROL | (VRN_FMT_RU + index), {});
}

template <class Unit>
void Encoder<Unit>::DoS() {
    int c = Peek();
    if (c == 'p' || c == 's') ++cursor_;
    if (c == 'p') SimpleControl(VRN_FMT_SP, 10);
    else if (c == 's') SimpleControl(VRN_FMT_SS, 9);
    else SimpleControl(VRN_FMT_S, 8);
}

template <class Unit>
void Encoder<Unit>::SimpleControl(int code, int virtualCode) {
    virtualCode_ = virtualCode;
    RepeatNotAllowed();
    Emit(VRN_FMT_CONTROL | code, {});
}

template <class Unit>
void Encoder<Unit>::DoT() {
    int c = Peek();
    int code = VRN_FMT_T;
    if (c == 'l' || c == 'r') {
        ++cursor_;
        code = c == 'l' ? VRN_FMT_TL : VRN_FMT_TR;
    }
    virtualCode_ = 11 + (code - VRN_FMT_T);
    RepeatNotAllowed();
    Getw();
    if (Stopped()) return;
    Unit& flags = header()[VRN_FMT_HEADER_FLAGS];
    if (code != VRN_FMT_TR) flags |= VRN_FMT_HAS_T;
    // A bad position clears the flag even when an earlier T had set it.
    if (w_.kind == kAbsent) {
        flags &= ~static_cast<Unit>(VRN_FMT_HAS_T);
        Report(12);
        return;
    }
    if (w_.kind == kConstant && !InRange(code, 0, w_.value)) {
        flags &= ~static_cast<Unit>(VRN_FMT_HAS_T);
        Report(13, w_.value);
        return;
    }
    Emit(VRN_FMT_CONTROL | code, {w_});
}

template <class Unit>
void Encoder<Unit>::DoX() {
    virtualCode_ = 14;
    Operand count;
    bool had = TakeRepeat(&count);
    if (!had) {
        if ((flags_ & (VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95 | VRN_FMT_LEVEL_F2003 | VRN_FMT_LEVEL_F2008)) &&
            !Report(9)) {
            return;
        }
        count = {kConstant, 1};
    } else if (count.kind == kConstant && !InRange(VRN_FMT_X, 0, count.value)) {
        Report(13, count.value);
        return;
    }
    Emit(VRN_FMT_CONTROL | VRN_FMT_X, {count});
}

template <class Unit>
void Encoder<Unit>::DoDollar() {
    virtualCode_ = 15;
    RepeatNotAllowed();
    if ((flags_ & kLevelBits) && !LevelCheck()) return;
    Emit(VRN_FMT_CONTROL | VRN_FMT_DOLLAR, {});
}

template <class Unit>
void Encoder<Unit>::DoHollerith() {
    virtualCode_ = 32;
    if ((flags_ & VRN_FMT_NO_HOLLERITH) && !Report(39)) return;
    if ((flags_ & (VRN_FMT_LEVEL_F95 | VRN_FMT_LEVEL_F2003 | VRN_FMT_LEVEL_F2008)) && !Report(44)) return;
    Operand count;
    bool had = TakeRepeat(&count);
    bool skip = false;
    if (!had) {
        skip = Report(20);
    } else if (count.kind == kVariable) {
        skip = Report(42);
        if (skip) EmitNoOp(count.value);
    } else if (!InRange(VRN_FMT_H, 0, count.value)) {
        skip = Report(3, count.value);
    } else {
        GenHCode(count.value);
        return;
    }
    if (skip) {
        SkipToNextSeparator();
        separator_ = 2;
    }
}

// ---- literals ----------------------------------------------------------------------

template <class Unit>
void Encoder<Unit>::BeginPiece() {
    // An op, its two length units and at least one unit of text.
    if (!Ensure(4)) return;
    piece_ = chunk_ + position_;
    piece_[0] = static_cast<Unit>((pieceCode_ << 16) | 0x11u);
    position_ += 3;
    pieceBytes_ = 0;
    pieceCapacity_ = SpaceLeft() * kUnitBytes;
}

template <class Unit>
void Encoder<Unit>::EndPiece() {
    if (piece_ == nullptr) return;
    int32_t units = (pieceBytes_ + kUnitBytes - 1) / kUnitBytes;
    auto* bytes = reinterpret_cast<uint8_t*>(piece_ + 3);
    std::memset(bytes + pieceBytes_, 0, units * kUnitBytes - pieceBytes_);
    piece_[1] = pieceBytes_;
    piece_[2] = 3 + units;
    position_ += units;
    logical_ += 3 + units;
    piece_ = nullptr;
}

template <class Unit>
void Encoder<Unit>::AppendBytes(const uint8_t* bytes, int32_t count) {
    for (int32_t i = 0; i < count && !Stopped(); ++i) {
        if (piece_ != nullptr && pieceBytes_ == pieceCapacity_) EndPiece();
        if (piece_ == nullptr) BeginPiece();
        if (Stopped()) return;
        reinterpret_cast<uint8_t*>(piece_ + 3)[pieceBytes_++] = bytes[i];
    }
}

template <class Unit>
void Encoder<Unit>::DropSince(const Mark& mark) {
    // Chunks taken since the mark hang behind the first Cont written since then.
    if (markCont_ != nullptr) FreeChainFrom(markCont_, chunk_);
    markCont_ = nullptr;
    chunk_ = mark.chunk;
    position_ = mark.position;
    capacity_ = mark.capacity;
    logical_ = mark.logical;
    header()[VRN_FMT_HEADER_FLAGS] = mark.flags;
    previousCont_ = mark.previousCont;
    firstCont_ = mark.firstCont;
    piece_ = nullptr;
}

// Takes one character of a literal at the cursor into `bytes`: its length, 0 for a
// character that ends the text too early (a lone backslash, a cut multibyte character).
template <class Unit>
int Encoder<Unit>::TakeLiteralChar(uint8_t* bytes) {
    int32_t left = length_ - cursor_;
    int32_t width = MbCharLen();
    if (width > 1) {
        if (width > left) return 0;
        std::memcpy(bytes, text_ + cursor_, width);
        cursor_ += width;
        return width;
    }
    uint8_t c = text_[cursor_];
    if (c == '\\' && (flags_ & VRN_FMT_ESCAPES)) {
        if (left < 2) return 0;
        uint8_t escaped = text_[cursor_ + 1];
        switch (escaped) {
        case 'n': c = 10; break;
        case 'r': c = 13; break;
        case 't': c = 9; break;
        case '0': c = 0; break;
        case 'b': c = 8; break;
        case 'f': c = 12; break;
        default: c = escaped; break;
        }
        cursor_ += 2;
        bytes[0] = c;
        return 1;
    }
    ++cursor_;
    bytes[0] = c;
    return 1;
}

// Reads a quoted text behind its opening delimiter: false when the text ends first.
template <class Unit>
bool Encoder<Unit>::ReadQuoted(int delimiter, ScratchBytes* out) {
    uint8_t bytes[MB_LEN_MAX > 4 ? MB_LEN_MAX : 4];
    while (cursor_ < length_) {
        if (text_[cursor_] == delimiter && MbCharLen() == 1) {
            if (cursor_ + 1 < length_ && text_[cursor_ + 1] == delimiter) {
                cursor_ += 2;
                uint8_t one = static_cast<uint8_t>(delimiter);
                if (!out->Append(&one, 1)) return OutOfMemory(), false;
                continue;
            }
            ++cursor_;
            return true;
        }
        int count = TakeLiteralChar(bytes);
        if (count == 0) break;
        if (!out->Append(bytes, count)) return OutOfMemory(), false;
    }
    return false;
}

template <class Unit>
void Encoder<Unit>::GenStringCode(int delimiter, int code) {
    Mark mark = Save();
    ++cursor_;  // the opening delimiter
    pieceCode_ = VRN_FMT_CONTROL | code;
    piece_ = nullptr;
    uint8_t bytes[MB_LEN_MAX > 4 ? MB_LEN_MAX : 4];
    bool closed = false;
    while (cursor_ < length_ && !Stopped()) {
        if (text_[cursor_] == delimiter && MbCharLen() == 1) {
            if (cursor_ + 1 < length_ && text_[cursor_ + 1] == delimiter) {
                cursor_ += 2;
                uint8_t one = static_cast<uint8_t>(delimiter);
                AppendBytes(&one, 1);
                continue;
            }
            ++cursor_;
            closed = true;
            break;
        }
        int count = TakeLiteralChar(bytes);
        if (count == 0) break;
        AppendBytes(bytes, count);
    }
    if (Stopped()) return;
    if (!closed) {
        DropSince(mark);
        cursor_ = length_;
        Report(25);
        return;
    }
    EndPiece();
    ++descriptorCount_;
    building_ = false;
}

template <class Unit>
void Encoder<Unit>::GenHCode(int64_t count) {
    Mark mark = Save();
    pieceCode_ = VRN_FMT_CONTROL | VRN_FMT_H;
    piece_ = nullptr;
    uint8_t bytes[MB_LEN_MAX > 4 ? MB_LEN_MAX : 4];
    int64_t left = count;
    while (left > 0 && cursor_ < length_ && !Stopped()) {
        int32_t before = cursor_;
        int taken = TakeLiteralChar(bytes);
        if (taken == 0) break;
        bool escape = taken == 1 && cursor_ - before == 2;
        // A multibyte character that would pass the count gives only the bytes up to it.
        int32_t use = escape ? 1 : static_cast<int32_t>(taken < left ? taken : left);
        if (!escape && use < taken) cursor_ = before + use;
        AppendBytes(bytes, use);
        left -= escape ? 1 : use;
    }
    if (Stopped()) return;
    if (left > 0) {
        DropSince(mark);
        cursor_ = length_;
        Report(26, count);
        return;
    }
    EndPiece();
    ++descriptorCount_;
    building_ = false;
}

// ---- DT ----------------------------------------------------------------------------

template <class Unit>
void Encoder<Unit>::DoDT() {
    virtualCode_ = 33;
    if ((flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90 | VRN_FMT_LEVEL_F90 | VRN_FMT_LEVEL_F95)) &&
        !LevelCheck()) {
        return;
    }
    CheckRepeatRange();
    if (Stopped()) return;
    ScratchBytes type;
    int c = Peek();
    if (c == '\'' || c == '"') {
        int delimiter = text_[cursor_];
        ++cursor_;
        if (!ReadQuoted(delimiter, &type)) {
            if (Stopped()) return;
            cursor_ = length_;
            Report(25);
            return;
        }
    }
    int32_t width = (flags_ & VRN_FMT_INTEGER2) ? 2 : (flags_ & VRN_FMT_INTEGER8) ? 8 : 4;
    ScratchBytes list;
    int64_t expressions[2] = {-1, -1};  // the first and last expression of the list
    if (Peek() == '(') {
        ++cursor_;
        int32_t openGroup = -1;  // offset of the head of the constant group being filled
        int32_t entry = 0;
        if (Peek() == ')') {
            ++cursor_;
            if (!Report(47)) return;
        } else {
            while (!Stopped()) {
                c = Peek();
                if (c == ',' || c == ')') {
                    // An entry is missing: a doubled comma or a comma before ")".
                    if (!Report(7)) return;
                    ++cursor_;
                    if (c == ')') break;
                    continue;
                }
                int64_t value = 0;
                int kind = GetSignedOperand(&value, width, 3 + entry);
                if (Stopped()) return;
                if (kind == kAbsent) {
                    if (c == -1) break;
                    uint8_t bad = text_[cursor_];
                    if (!Report(bad >= 32 && bad <= 126 ? 48 : 49, bad)) return;
                    while ((c = Peek()) != -1 && c != ',' && c != ')') ++cursor_;
                    if (c == -1) break;
                    ++cursor_;
                    if (c == ')') break;
                    continue;
                } else if (kind == kVariable) {
                    uint32_t head = 0x40000000u | 1u;
                    int32_t index = static_cast<int32_t>(value);
                    if (!list.Append(&head, 4) || !list.Append(&index, 4)) return OutOfMemory();
                    if (expressions[0] < 0) expressions[0] = value;
                    expressions[1] = value;
                    openGroup = -1;
                } else {
                    if (openGroup < 0) {
                        uint32_t head = 0;
                        openGroup = list.length();
                        if (!list.Append(&head, 4)) return OutOfMemory();
                    }
                    uint32_t head;
                    std::memcpy(&head, list.data() + openGroup, 4);
                    ++head;
                    std::memcpy(list.data() + openGroup, &head, 4);
                    int16_t value16 = static_cast<int16_t>(value);
                    int32_t value32 = static_cast<int32_t>(value);
                    bool stored = width == 2   ? list.Append(&value16, 2)
                                  : width == 4 ? list.Append(&value32, 4)
                                               : list.Append(&value, 8);
                    if (!stored) return OutOfMemory();
                }
                ++entry;
                c = Peek();
                if (c == ',') {
                    ++cursor_;
                    if (Peek() == ')') {
                        if (!Report(7)) return;
                        ++cursor_;
                        break;
                    }
                    continue;
                }
                if (c == ')') {
                    ++cursor_;
                    break;
                }
                if (c == -1) break;
                uint8_t bad = text_[cursor_];
                if (!Report(bad >= 32 && bad <= 126 ? 48 : 49, bad)) return;
                while ((c = Peek()) != -1 && c != ',' && c != ')') ++cursor_;
                if (c == ',') ++cursor_;
                else if (c == ')') {
                    ++cursor_;
                    break;
                }
            }
        }
    }
    if (Stopped()) return;
    int32_t typeUnits = (type.length() + kUnitBytes - 1) / kUnitBytes;
    int32_t listUnits = (list.length() + kUnitBytes - 1) / kUnitBytes;
    int32_t total = 5 + typeUnits + listUnits;
    if (!Ensure(total)) return;
    Unit* op = chunk_ + position_;
    op[0] = static_cast<Unit>((uint32_t{VRN_FMT_DT} << 16) | 0x1111u);
    op[1] = type.length();
    op[2] = width;
    op[3] = list.length();
    op[4] = total;
    auto* bytes = reinterpret_cast<uint8_t*>(op + 5);
    std::memset(bytes, 0, (typeUnits + listUnits) * kUnitBytes);
    if (type.length() > 0) std::memcpy(bytes, type.data(), type.length());
    if (list.length() > 0) std::memcpy(bytes + typeUnits * kUnitBytes, list.data(), list.length());
    for (int64_t index = expressions[0]; index >= 0 && index <= expressions[1]; ++index) {
        NoteExpression(index, int64_t{logical_} * kUnitBytes);
    }
    position_ += total;
    logical_ += total;
    ++descriptorCount_;
    building_ = false;
}

// ---- the main loop -----------------------------------------------------------------

// The virtual code a diagnostic names for the descriptor that starts with c.
int VirtualCodeOfLetter(int c, int current) {
    switch (c) {
    case 'a': return 28;
    case 'b': return 17;
    case 'd': return 20;
    case 'e': return 23;
    case 'f': return 22;
    case 'g': return 26;
    case 'h': return 32;
    case 'i': return 16;
    case 'l': return 27;
    case 'o': return 18;
    case 'p': return 7;
    case 'q': return 29;
    case 'r': return 36;
    case 's': return 8;
    case 't': return 11;
    case 'x': return 14;
    case 'z': return 19;
    case '$': return 15;
    case '\'': return 30;
    case '"': return 31;
    case '(': return 0;
    default: return current;
    }
}

template <class Unit>
void Encoder<Unit>::SeparatorCheck() {
    for (;;) {
        int c = Peek();
        descriptorPosition_ = cursor_;
        if (c == ',') {
            if (separator_ == 1) {
                // A comma where an item belongs: "(," or a doubled comma.
                if (!Report(7)) return;
                ++cursor_;
                continue;
            }
            ++cursor_;
            separator_ = 1;
            if (Peek() == ')') {
                descriptorPosition_ = cursor_;
                if (!Report(7)) return;
            }
            continue;
        }
        if (separator_ == 0 && c != ')' && c != '/' && c != ':' && c != -1) {
            virtualCode_ = VirtualCodeOfLetter(IsDigit(c) ? 0 : c, virtualCode_);
            Report(8, IsDigit(c) || c == '<' || c == '+' || c == '-' ? kRepeat : kNoRepeat);
        }
        return;
    }
}

template <class Unit>
void Encoder<Unit>::Dispatch(int c) {
    separator_ = 0;
    // The letters of descriptors are taken here; their handlers read what follows.
    constexpr uint32_t kLetters = [] {
        uint32_t mask = 0;
        for (const char* letter = "abdefghilopqrstxz"; *letter != 0; ++letter) mask |= 1u << (*letter - 'a');
        return mask;
    }();
    if (c >= 'a' && c <= 'z' && (kLetters >> (c - 'a') & 1u)) ++cursor_;
    switch (c) {
    case '\'':
    case '"':
        virtualCode_ = c == '\'' ? 30 : 31;
        RepeatNotAllowed();
        GenStringCode(text_[cursor_], c == '\'' ? VRN_FMT_APOSTROPHE : VRN_FMT_QUOTE);
        return;
    case '$':
        ++cursor_;
        DoDollar();
        return;
    case 'a': DoA(); return;
    case 'b': DoB(); return;
    case 'd': DoD(); return;
    case 'e': DoE(); return;
    case 'f':
        virtualCode_ = 22;
        DoFwd(VRN_FMT_F);
        return;
    case 'g':
        virtualCode_ = 26;
        DoEwde(VRN_FMT_G, VRN_FMT_GD, VRN_FMT_GE, VRN_FMT_GQ, "edq");
        return;
    case 'h': DoHollerith(); return;
    case 'i':
        virtualCode_ = 16;
        DoIwm(VRN_FMT_I, VRN_FMT_IM);
        return;
    case 'l': DoL(); return;
    case 'o':
        virtualCode_ = 18;
        if ((flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90)) && !Report(flags_ & VRN_FMT_LEVEL_F77 ? 27 : 29)) {
            return;
        }
        DoIwm(VRN_FMT_O, VRN_FMT_OM);
        return;
    case 'p': DoP(); return;
    case 'q': DoQ(); return;
    case 'r': DoR(); return;
    case 's': DoS(); return;
    case 't': DoT(); return;
    case 'x': DoX(); return;
    case 'z':
        virtualCode_ = 19;
        if ((flags_ & VRN_FMT_LEVEL_F77) && !Report(27)) return;
        DoIwm(VRN_FMT_Z, VRN_FMT_ZM);
        return;
    case '/':
        ++cursor_;
        virtualCode_ = 3;
        if (HasRepeat() && (flags_ & (VRN_FMT_LEVEL_F77 | VRN_FMT_LEVEL_PRE90)) && !Report(30, 3)) return;
        CheckRepeatRange();
        Emit(VRN_FMT_CONTROL | VRN_FMT_SLASH, {});
        separator_ = 2;
        return;
    case ':':
        ++cursor_;
        virtualCode_ = 4;
        RepeatNotAllowed();
        Emit(VRN_FMT_CONTROL | VRN_FMT_COLON, {});
        separator_ = 2;
        return;
    case ',':
        // Reached only behind a repeat count: the separator check takes every other comma.
        ++cursor_;
        separator_ = 1;
        if (HasRepeat()) {
            atRepeat_ = true;
            Report(5, repeat_.value);
            atRepeat_ = false;
            if (repeat_.kind == kVariable) EmitNoOp(repeat_.value);
            pending_ = kNoRepeat;
        }
        return;
    default:
        virtualCode_ = VirtualCodeOfLetter(c, virtualCode_);
        if (Report(14, text_[cursor_])) {
            ++cursor_;
            SkipToNextSeparator();
        }
        separator_ = 2;
        return;
    }
}

template <class Unit>
bool Encoder<Unit>::InitializeEncode() {
    size_t firstBytes = size_t{kFirstChunkUnits} * kUnitBytes;
    if (buffer_->base == nullptr || static_cast<size_t>(buffer_->bytes) < firstBytes) {
        std::free(buffer_->base);
        buffer_->base = std::malloc(firstBytes + kChunkTailBytes);
        buffer_->bytes = buffer_->base != nullptr ? static_cast<int32_t>(firstBytes) : 0;
        if (buffer_->base == nullptr) return false;
    }
    base_ = chunk_ = static_cast<Unit*>(buffer_->base);
    capacity_ = kFirstChunkUnits;  // whatever the buffer's size, so chunks break alike
    base_[VRN_FMT_HEADER_OP] = static_cast<Unit>(kHeaderOpWord);
    base_[VRN_FMT_HEADER_LENGTH] = kHeaderUnits;
    base_[VRN_FMT_HEADER_DEPTH] = 0;
    base_[VRN_FMT_HEADER_FLAGS] = Traits::kInitialFlags;
    base_[VRN_FMT_HEADER_FIRST_CONT] = 0;
    position_ = logical_ = kHeaderUnits;
    expressionTable.count = 0;
    return true;
}

template <class Unit>
void Encoder<Unit>::MismatchParentheses() {
    descriptorPosition_ = cursor_;
    if (!Report(15)) return;
    // The outermost level is closed by End, every other one by ")".
    for (; depth_ > 1; --depth_) Emit(VRN_FMT_CONTROL | VRN_FMT_RPAREN, {});
    Emit(VRN_FMT_CONTROL | VRN_FMT_END, {});
    depth_ = 0;
}

template <class Unit>
void Encoder<Unit>::NormalWrapUp() {
    // The closing Cont has its room reserved in every chunk.
    Unit* last = chunk_ + position_;
    last[0] = static_cast<Unit>(kContOpWord);
    SetContTarget<Unit>(last, nullptr);
    last[2] = 0;
    if (previousCont_ != nullptr) previousCont_[2] = position_;
    if (firstCont_ == nullptr) firstCont_ = last;
    Unit* code = header();
    code[VRN_FMT_HEADER_LENGTH] = logical_;
    code[VRN_FMT_HEADER_DEPTH] = maxDepth_;
    SetFirstCont(code, firstCont_);
    result_ = code;
    if (!CompileTime()) return;
    // The compiler stores this code in an object file, where an address or offset of a Cont
    // inside this library's buffer means nothing: a packed code has none.
    if (code[VRN_FMT_HEADER_FLAGS] & VRN_FMT_CONTIGUOUS) {
        code[VRN_FMT_HEADER_FIRST_CONT] = 0;
    } else {
        PackFormat();
    }
}

template <class Unit>
void Encoder<Unit>::PackFormat() {
    auto* packed = static_cast<Unit*>(std::malloc(size_t(logical_) * kUnitBytes));
    if (packed == nullptr) {
        OutOfMemory();
        return;
    }
    Unit* out = packed;
    Unit* chunk = base_;
    Unit* cont = firstCont_;
    for (;;) {
        size_t units = static_cast<size_t>(cont - chunk);
        std::memcpy(out, chunk, units * kUnitBytes);
        out += units;
        Unit* next = ContTarget(cont);
        Unit* nextCont = next != nullptr ? next + cont[2] : nullptr;
        if (chunk != base_) std::free(chunk);
        if (next == nullptr) break;
        chunk = next;
        cont = nextCont;
    }
    firstCont_ = previousCont_ = nullptr;
    chunk_ = base_;
    packed[VRN_FMT_HEADER_FLAGS] |= VRN_FMT_CONTIGUOUS;
    packed[VRN_FMT_HEADER_FIRST_CONT] = 0;
    result_ = packed;
}

template <class Unit>
void Encoder<Unit>::ErrorWrapUp() {
    // The first chunk is the caller's buffer and stays; the chunks behind it go.
    if (firstCont_ != nullptr && chunk_ != base_) FreeChainFrom(firstCont_, chunk_);
    firstCont_ = previousCont_ = nullptr;
    chunk_ = base_;
}

template <class Unit>
intptr_t Encoder<Unit>::Run(EncodedResult* result) {
    if (flags_ & VRN_FMT_MULTIBYTE) std::mblen(nullptr, 0);
    if (!InitializeEncode()) {
        if (callback_ != nullptr) callback_(36, 0, 0, 0, 0, 0, 0, 0);
        return 0;
    }
    if (Peek() == -1) {
        // Empty or blank: "()" stands in for it.
        if (Report(1)) {
            Emit(VRN_FMT_CONTROL | VRN_FMT_LPAREN, {});
            Emit(VRN_FMT_CONTROL | VRN_FMT_END, {});
            maxDepth_ = 1;
        }
    } else {
        descriptorPosition_ = cursor_;
        virtualCode_ = 0;
        if (Peek() == '(') ++cursor_;
        else Report(2);
        Emit(VRN_FMT_CONTROL | VRN_FMT_LPAREN, {});
        depth_ = maxDepth_ = 1;
        separator_ = 1;
        while (!Stopped()) {
            SeparatorCheck();
            if (Stopped()) break;
            DoRepeat();
            if (Stopped()) break;
            if (repeat_.kind == kAbsent && repeat_.value == -1) continue;  // a bad sign was skipped
            int c = Peek();
            descriptorPosition_ = cursor_;
            building_ = true;
            if (c == -1) break;
            if (c == '(') {
                ++cursor_;
                virtualCode_ = 0;
                CheckRepeatRange();
                Emit(VRN_FMT_CONTROL | VRN_FMT_LPAREN, {});
                if (++depth_ > maxDepth_) maxDepth_ = depth_;
                separator_ = 1;
                continue;
            }
            if (c == ')') {
                ++cursor_;
                virtualCode_ = 1;
                if (HasRepeat()) {
                    atRepeat_ = true;
                    bool goOn = Report(4, repeat_.value);
                    atRepeat_ = false;
                    if (goOn && repeat_.kind == kVariable) EmitNoOp(repeat_.value);
                    pending_ = kNoRepeat;
                }
                if (depth_ == 1) {
                    Emit(VRN_FMT_CONTROL | VRN_FMT_END, {});
                    depth_ = 0;
                    break;
                }
                Emit(VRN_FMT_CONTROL | VRN_FMT_RPAREN, {});
                --depth_;
                separator_ = 0;
                continue;
            }
            Dispatch(c);
        }
        building_ = false;
        if (!Stopped() && depth_ > 0) MismatchParentheses();
        if (!Stopped() && CompileTime() && Peek() != -1) {
            descriptorPosition_ = cursor_;
            Report(35);
        }
    }
    if (!Stopped()) NormalWrapUp();
    if (Stopped()) {
        ErrorWrapUp();
        return stop_;
    }
    result->code = result_;
    result->bytes = static_cast<int32_t>(result_[VRN_FMT_HEADER_LENGTH] * kUnitBytes);
    result->expressionCount = expressionTable.count;
    result->expressions = expressionTable.count > 0 ? expressionTable.records : nullptr;
    return 1;
}

template <class Unit>
void FreeExtensions(void* code) {
    auto* header = static_cast<Unit*>(code);
    if (header == nullptr || (header[VRN_FMT_HEADER_FLAGS] & VRN_FMT_CONTIGUOUS)) return;
    FreeChainFrom<Unit>(FirstCont(header), nullptr);
    header[VRN_FMT_HEADER_FLAGS] |= VRN_FMT_CONTIGUOUS;
}

}  // namespace

intptr_t EncodeFormat(const char* text, int32_t length, uint32_t flags, VrnFormatCallback callback,
                      FormatCodeBuffer* buffer, EncodedResult* result) {
    return Encoder<int32_t>(text, length, flags, callback, buffer).Run(result);
}

intptr_t EncodeFormat64(const char* text, int32_t length, uint32_t flags, VrnFormatCallback callback,
                        FormatCodeBuffer* buffer, EncodedResult* result) {
    return Encoder<int64_t>(text, length, flags, callback, buffer).Run(result);
}

void FreeFormatExtensions(void* code) { FreeExtensions<int32_t>(code); }
void FreeFormatExtensions64(void* code) { FreeExtensions<int64_t>(code); }

FormatCodeBuffer* CompileTimeBuffer(bool encoding64) { return encoding64 ? &compileBuffer64 : &compileBuffer32; }

void FreeCompileTimeBuffers() {
    for (FormatCodeBuffer* buffer : {&compileBuffer32, &compileBuffer64}) {
        std::free(buffer->base);
        buffer->base = nullptr;
        buffer->bytes = 0;
    }
    std::free(expressionTable.records);
    expressionTable = {};
}
