// LDScan: the table-driven scanner of list-directed (and namelist) input.
//
// The grammar lives in _ldscan_transition; the code here only performs the actions the
// table names. Every byte taken from the input is also copied to the rescan buffer, so
// that a value can be read again: after a wrong turn (an action rewinds) or for the
// items of a repeat count. Bytes are taken in place from the unit's buffer or the
// internal record while they last, and the record layer is told how many were taken
// before anything else touches the record.
#include <climits>
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/options.h"
#include "core/unit.h"
#include "listio/list_scanner.h"
#include "listio/listio.h"
#include "listio/scan_table.h"
#include "transport/transport.h"
#include "vrn90.h"
#include "vrn90_keywords.h"

namespace {

constexpr int32_t kRescanStep = 4096;
constexpr int64_t kTenthOfMax = 922337203685477580;  // INT64_MAX / 10

const char* const kLimitMax = "9223372036854775807";
const char* const kLimitMin = "-9223372036854775808";

bool StandardLevel(const LocalContext* context) { return StrictLanguageLevel(context->global->options); }

// NaN and infinity in input came with Fortran 2003.
bool NinetiesLevel(const LocalContext* context) {
    uint32_t level = context->global->options.optLangLvl;
    return level == VRN_KEY_90STD || level == VRN_KEY_95STD;
}

int Upper(int byte) { return byte >= 'a' && byte <= 'z' ? byte - 32 : byte; }

bool IsInternal(const LocalContext* context) { return context->unit == nullptr; }

enum class Finish { F1, F2, F3, F4 };

// What an action tells the loop.
enum Outcome { kGoOn, kFinished, kStopped };

class Scanner {
public:
    Scanner(LocalContext* context, bool rescan)
        : c_(context), rescan_(rescan), comma_(context->modeDecimal == VRN_KEY_COMMA),
          external_(context->unit != nullptr), type_(context->ld_item_type), text_(context->scanBuffer) {}

    int32_t Run(bool resume);

private:
    uint32_t P(uint32_t point, uint32_t comma) const { return comma_ ? comma : point; }

    // ---- Bytes ----
    bool Fetch();
    bool FetchFromInput();
    void Commit();
    bool Append(char byte);
    bool Grow();
    void Rewind(bool keepAll);
    void Restart();

    // ---- The number text in the scratch buffer ----
    void AppendText(char byte) {
        if (textLength_ < kScanBufferSize - 1) text_[textLength_++] = byte;
    }
    void TerminateText() { text_[textLength_] = '\0'; }
    bool TextIsNegative() const { return textLength_ > 0 && text_[0] == '-'; }

    // ---- Values ----
    void Digit(int digit) {
        if (++digits_ <= 18) {
            accumulator_ = positive_ ? accumulator_ * 10 + digit : accumulator_ * 10 - digit;
        } else {
            LongDigit(digit);
        }
    }
    void LongDigit(int digit);  // the 19th digit on, which may overflow

    // The digits that follow in place, as a loop of the state on action 7 or 15 would take
    // them one by one.
    void TakeDigitRun(uint8_t action) {
        const char* from = window_ + taken_;
        int32_t available = windowSize_ - taken_;
        int32_t count = 0;
        while (count < available && static_cast<unsigned char>(from[count] - '0') <= 9) ++count;
        if (count == 0) return;
        if (action == 7) {
            // An overflow changes the state: the digits behind it go through the table.
            uint32_t state = state_;
            int32_t done = 0;
            next_ = state;
            while (done < count && next_ == state) {
                AppendText(from[done]);
                Digit(from[done] - '0');
                ++done;
            }
            count = done;
            state_ = next_;
        } else {
            int32_t room = kScanBufferSize - 1 - textLength_;
            int32_t copied = count < room ? count : room;
            if (copied > 0) std::memcpy(text_ + textLength_, from, static_cast<size_t>(copied));
            textLength_ += copied > 0 ? copied : 0;
        }
        while (limit_ - cursor_ < count) {
            if (!Grow()) return;  // the buffer keeps what fits; the scan stops at its next byte
        }
        std::memcpy(cursor_, from, static_cast<size_t>(count));
        cursor_ += count;
        taken_ += count;
        byte_ = static_cast<unsigned char>(from[count - 1]);
        class_ = byte_ == '0' ? 8 : 9;
    }

    // Blanks between values are dropped without a copy in the rescan buffer: the next
    // value restarts the buffer at its first byte anyway.
    static bool BetweenValues(uint32_t state) { return state == 13 || state == 2 || state == 69 || state == 61; }
    void SkipBlanksInPlace() {
        if (rescan_) return;
        while (taken_ < windowSize_ && (window_[taken_] == ' ' || window_[taken_] == '\t')) ++taken_;
    }
    void StoreInteger() {
        c_->ld_int_value = accumulator_;
        c_->ld_overflow_size = marker_;
    }
    void ResetNumber() {
        accumulator_ = 0;
        digits_ = 0;
        marker_ = 0;
        positive_ = true;
        signSeen_ = false;
    }

    // ---- Ends ----
    Outcome Done(Finish form);
    Outcome Fin() { return Done(next_ == 3 ? Finish::F1 : Finish::F3); }
    Outcome Stop();
    Outcome StopUnless(int32_t answer) { return answer == kStatementStops ? Stop() : kGoOn; }
    bool SkipRecord();
    int32_t Report(int32_t message, const char* text = nullptr);
    Outcome FailSpecial();

    Outcome Perform(uint32_t action);
    Outcome ValueStart();                // action 12
    Outcome RepeatCount();               // action 13
    Outcome IntegerEnds();               // action 14
    Outcome NamelistWord();              // action 10 in namelist input
    Outcome StepBackOverEquals();        // action 35

    LocalContext* c_;
    bool rescan_;
    bool comma_;
    bool external_;
    uint32_t type_;

    // The byte in hand and where the machine stands.
    int byte_ = 0;
    uint32_t class_ = 0;
    uint32_t state_ = 0;
    uint32_t next_ = 0;
    bool redispatch_ = false;
    bool redispatching_ = false;

    // The bytes in place in the record: taken_ of them are read, and not yet reported to
    // the record layer.
    const char* window_ = nullptr;
    int32_t windowSize_ = 0;
    int32_t taken_ = 0;

    // The rescan buffer: cursor_ is where the next byte goes (input) or comes from (rescan).
    char* buffer_ = nullptr;
    char* cursor_ = nullptr;
    char* limit_ = nullptr;
    char* fill_ = nullptr;  // the end of the bytes to read back, in rescan mode

    int64_t accumulator_ = 0;
    int32_t digits_ = 0;
    int32_t marker_ = 0;
    bool positive_ = true;
    bool signSeen_ = false;
    const char* limitText_ = nullptr;

    char* text_;
    int32_t textLength_ = 0;
    int32_t rememberedLength_ = 0;

    int32_t nameIndex_ = 0;
    bool wordIsName_ = false;
    uint32_t rememberedState_ = 0;
};

// ---- Bytes ----

void Scanner::Commit() {
    if (taken_ > 0) IOConsumeInPlace(c_, taken_);
    window_ = nullptr;
    windowSize_ = 0;
    taken_ = 0;
}

bool Scanner::Grow() {
    char* old = buffer_;
    if (!LDGrowRescanBuffer(c_)) return false;
    buffer_ = c_->ld_rescan_buffer;
    cursor_ = buffer_ + (cursor_ - old);
    fill_ = buffer_ + (fill_ - old);
    limit_ = buffer_ + c_->ld_rescan_size;
    return true;
}

bool Scanner::Append(char byte) {
    if (cursor_ == limit_ && !Grow()) return false;
    *cursor_++ = byte;
    return true;
}

bool Scanner::Fetch() {
    if (rescan_) {
        if (cursor_ < fill_) {
            // A newline in the buffer is the end of a record, even where the file is an
            // internal one and a newline byte in its records would be plain data.
            byte_ = static_cast<unsigned char>(*cursor_++);
            class_ = byte_ == '\n' ? 3 : c_->ld_class_map[_LDCharClass[byte_]];
            return true;
        }
        rescan_ = false;  // used up: new bytes from the input go behind the old ones
    }
    if (taken_ < windowSize_) {
        unsigned char byte = static_cast<unsigned char>(window_[taken_]);
        if (!(external_ && byte == '\n')) {
            ++taken_;
            if (cursor_ == limit_ && !Grow()) return false;
            *cursor_++ = static_cast<char>(byte);
            byte_ = byte;
            class_ = c_->ld_class_map[_LDCharClass[byte]];
            return true;
        }
    }
    return FetchFromInput();
}

// The byte source's slow path: the window is used up or stands on a newline.
bool Scanner::FetchFromInput() {
    Commit();
    for (;;) {
        windowSize_ = IORecordWindow(c_, &window_);
        int byte;
        if (windowSize_ > 0 && !(external_ && window_[0] == '\n')) {
            byte = static_cast<unsigned char>(window_[0]);
            taken_ = 1;
        } else {
            windowSize_ = 0;
            byte = IOGetByte(c_);
        }
        if (byte >= 0) {
            c_->ld_at_record_start = 0;
            if (c_->ld_skip_column) {
                // Column 1 of a namelist record is the carriage-control column of the
                // records namelist output writes: a blank there is dropped. The older
                // dialect did not read the column at all.
                c_->ld_skip_column = 0;
                if (byte == ' ' || c_->global->options.optNamelist == VRN_KEY_OLD) {
                    Commit();  // the byte may have come from the record in place
                    continue;
                }
            }
            if (!Append(static_cast<char>(byte))) return false;
            byte_ = byte;
            class_ = c_->ld_class_map[_LDCharClass[byte]];
            return true;
        }
        Commit();
        if (c_->atEndOfFile) {
            c_->ld_at_record_start = 0;
            byte_ = ' ';
            class_ = kLDClassEndOfFile;
            return Append(' ');
        }
        if (c_->recordOverflow && !c_->itemsStopped) {
            // The end of a record counts as class 3 whatever the file, also inside this scan.
            c_->ld_class_map[3] = 3;
            if (!SkipRecord()) return false;
            byte_ = '\n';
            class_ = 3;
            return Append('\n');
        }
        c_->ld_at_record_start = 0;
        return false;
    }
}

// Ends the current record and notes that the next one is untouched.
bool Scanner::SkipRecord() {
    Commit();
    if (!IOTerminateRecord(c_)) {
        if (c_->atEndOfFile) LDEndOfFileError(c_);
        return false;
    }
    c_->ld_at_record_start = 1;
    c_->ld_skip_column = c_->ld_in_namelist;
    return true;
}

void Scanner::Rewind(bool keepAll) {
    if (keepAll && rescan_ && cursor_ < fill_) cursor_ = fill_;
    fill_ = cursor_;
    cursor_ = buffer_;
    rescan_ = fill_ > buffer_;
}

// The buffer holds just the byte in hand. Bytes still to be read back move along.
void Scanner::Restart() {
    if (rescan_) {
        int64_t unread = fill_ - cursor_;
        std::memmove(buffer_ + 1, cursor_, static_cast<size_t>(unread));
        fill_ = buffer_ + 1 + unread;
    }
    buffer_[0] = static_cast<char>(byte_);
    cursor_ = buffer_ + 1;
}

// ---- Values ----

void Scanner::LongDigit(int digit) {
    bool fits = positive_ ? accumulator_ < kTenthOfMax || (accumulator_ == kTenthOfMax && digit <= 7)
                          : accumulator_ > -kTenthOfMax || (accumulator_ == -kTenthOfMax && digit <= 8);
    if (fits) {
        accumulator_ = positive_ ? accumulator_ * 10 + digit : accumulator_ * 10 - digit;
        return;
    }
    marker_ = 8;
    accumulator_ = positive_ ? INT64_MAX : INT64_MIN;
    limitText_ = positive_ ? kLimitMax : kLimitMin;
    next_ = next_ == P(6, 64) ? P(14, 70) : P(19, 75);
}

// ---- Ends ----

Outcome Scanner::Done(Finish form) {
    Commit();
    if (form == Finish::F1 || form == Finish::F2) {
        c_->ld_pending_char = byte_;
        c_->ld_pending_class = class_;
    } else {
        c_->ld_pending_char = -1;
    }
    if (form == Finish::F1 || form == Finish::F3) c_->nl_name_pending = 0;
    c_->ld_state = next_;
    c_->ld_rescan_cursor = cursor_;
    // A scan that rewound before it finished leaves the bytes to be read again.
    c_->ld_rescan_fill = static_cast<int32_t>((rescan_ ? fill_ : cursor_) - buffer_);
    return kFinished;
}

Outcome Scanner::Stop() {
    Commit();
    c_->ld_state = state_;
    return kStopped;
}

int32_t Scanner::Report(int32_t message, const char* text) {
    if (text != nullptr) return ErrorHandler(kClassConversion, kKindError, message, message, ArgText(1), text, 0u);
    return ErrorHandler(kClassConversion, kKindError, message, message, 0u);
}

// A NaN or infinity that was not one after all: read it again as the start of a value.
Outcome Scanner::FailSpecial() {
    if (byte_ == ')' && type_ == 5 && c_->ld_ieee_kind != 0) {
        TerminateText();
        return Done(Finish::F1);
    }
    Rewind(true);
    c_->ld_ieee_kind = 0;
    type_ = 0;
    next_ = 1;
    return kGoOn;
}

Outcome Scanner::ValueStart() {
    bool interchange = (c_->options & VRN_OPTION_LD_INTERCHANGE) != 0;
    if (interchange && (type_ == 0 || type_ == 1 || type_ == 3)) {
        bool firstByte = digits_ == 0 && textLength_ == 0;
        next_ = firstByte ? P(34, 90) : P(18, 74);
        redispatch_ = true;
        return kGoOn;
    }
    switch (type_) {
    case 0:
    case 3:
        next_ = digits_ > 0 ? P(18, 74) : P(17, 73);
        redispatch_ = true;
        return kGoOn;
    case 1:
        Rewind(false);
        next_ = P(37, 93);
        return kGoOn;
    case 2:
        Rewind(false);
        next_ = P(44, 100);
        return kGoOn;
    case 4:
        redispatch_ = true;
        switch (state_) {
        case 1: next_ = 20; break;
        case 4: next_ = 21; break;
        case 5: next_ = 22; break;
        case 6: case 14: next_ = 23; break;
        case 12: next_ = P(20, 76); break;
        case 60: next_ = 76; break;
        case 62: next_ = 77; break;
        case 63: next_ = 78; break;
        case 64: case 70: next_ = 79; break;
        default: break;
        }
        return kGoOn;
    default:
        LDItemNotComplex(c_);
        return Stop();
    }
}

Outcome Scanner::RepeatCount() {
    // A count carries no sign: "+3*" is as bad as "0*".
    if (accumulator_ <= 0 || signSeen_) {
        if (IsInternal(c_)) {
            Report(95);
        } else {
            ErrorHandler(kClassConversion, kKindError, 94, 94, ArgText(1), UnitNameForMessages(c_->unit), 0u);
        }
        return Stop();
    }
    c_->ld_repeat = accumulator_;
    if (marker_ != 0 && Report(96, limitText_) == kStatementStops) return Stop();
    // The value that follows is what the items replay: the buffer starts with it.
    if (rescan_) {
        int64_t unread = fill_ - cursor_;
        std::memmove(buffer_, cursor_, static_cast<size_t>(unread));
        fill_ = buffer_ + unread;
    }
    cursor_ = buffer_;
    textLength_ = 0;
    if ((c_->options & VRN_OPTION_LD_INTERCHANGE) && (type_ == 0 || type_ == 1 || type_ == 3)) {
        ResetNumber();
        next_ = 34;
        return kGoOn;
    }
    switch (type_) {
    case 0: case 3: ResetNumber(); next_ = P(15, 71); break;
    case 1: next_ = P(37, 93); break;
    case 2: next_ = P(41, 97); break;
    case 4: next_ = P(20, 76); break;
    default: next_ = P(30, 86); break;
    }
    return kGoOn;
}

Outcome Scanner::IntegerEnds() {
    bool interchange = (c_->options & VRN_OPTION_LD_INTERCHANGE) != 0;
    switch (type_) {
    case 0:
    case 3:
    case 1:
        if (type_ == 1 && !interchange) {
            if (LDItemNotLogical(c_) == kStatementStops) return Stop();
            c_->ld_type_error = 1;
            return Done(redispatching_ || next_ == 3 ? Finish::F1 : Finish::F3);
        }
        StoreInteger();
        if (c_->ld_blank_zero && byte_ == ' ' && !c_->ld_in_subscript) {
            next_ = P(28, 84);
            if (type_ == 1) return Done(Finish::F1);
            redispatch_ = true;
            return kGoOn;
        }
        if (c_->ld_in_subscript) {
            next_ = P(58, 113);
            return Done(Finish::F1);
        }
        return Fin();
    case 2:
        Rewind(false);
        next_ = P(44, 100);
        return kGoOn;
    case 4:
        next_ = P(23, 79);
        redispatch_ = true;
        return kGoOn;
    default:
        LDItemNotComplex(c_);
        return Stop();
    }
}

Outcome Scanner::NamelistWord() {
    bool interchange = (c_->options & VRN_OPTION_LD_INTERCHANGE) != 0;
    int upper = Upper(byte_);
    // A word that "(" has shown to be a name (action 37) is not taken for a value again,
    // which under the interchange flag it would be, for ever.
    bool word = !wordIsName_ &&
                ((class_ == 15 && type_ == 1) || (class_ == 15 && interchange && (type_ == 0 || type_ == 3)) ||
                 (type_ == 4 && (upper == 'I' || upper == 'N')));
    if (!word) {
        c_->array_abandon = 1;
        c_->ld_next_name = 1;
        c_->ld_null_value = 1;
        return Done(Finish::F2);
    }
    c_->ld_name_start = buffer_;
    if (class_ == 15) c_->ld_int_value = upper == 'T' ? 1 : 0;
    next_ = upper == 'N' ? 117 : upper == 'I' ? 124 : P(38, 94);
    return kGoOn;
}

Outcome Scanner::StepBackOverEquals() {
    Commit();
    if (byte_ > ' ') IOUngetByte(c_);
    if (cursor_ > buffer_) cursor_[-1] = ' ';
    c_->array_abandon = 1;
    c_->ld_null_value = 1;
    Rewind(false);
    return Done(Finish::F4);
}

Outcome Scanner::Perform(uint32_t action) {
    switch (action) {
    case 0: case 1: case 65:
        return kGoOn;
    case 2:
        if (!c_->ld_in_namelist) {
            Rewind(false);
            next_ = 12;
            return kGoOn;
        }
        if (c_->global->options.optLangLvl == VRN_KEY_90STD &&
            ErrorHandler(kClassLanguage, kKindError, 187, 187, 0u) != kRecover) {
            return Stop();
        }
        // A comment runs to the end of its record.
        if (!c_->ld_at_record_start && !SkipRecord()) return Stop();
        return kGoOn;
    case 3:
        c_->ld_null_value = 1;
        if (c_->ld_in_subscript) {
            next_ = P(58, 113);
            return Done(Finish::F1);
        }
        return Fin();
    case 4:
        if (c_->dtioChild && !c_->ld_at_record_start && !c_->atEndOfFile) SkipRecord();
        return Stop();
    case 5:
        Commit();
        c_->ld_state = state_;
        LDEndOfFileError(c_);
        return kStopped;
    case 6:
        positive_ = byte_ == '+';
        signSeen_ = true;
        AppendText(static_cast<char>(byte_));
        return kGoOn;
    case 7:
        AppendText(static_cast<char>(byte_));
        Digit(byte_ - '0');
        return kGoOn;
    case 8:
        if (type_ == 2) {
            next_ = P(44, 100);
            redispatch_ = true;
            return kGoOn;
        }
        if (type_ == 5) return kGoOn;
        LDReportSyntaxError(c_);
        return Stop();
    case 9:
        if (type_ == 2) {
            c_->ld_class_map[byte_ == '"' ? 12 : 11] = 0;
            return kGoOn;
        }
        if (type_ == 5) {
            LDItemNotComplex(c_);
            return Stop();
        }
        LDReportSyntaxError(c_);
        return Stop();
    case 10:
        if (!c_->ld_in_namelist || c_->nl_name_pending) return ValueStart();
        return NamelistWord();
    case 11:
        if (c_->ld_in_namelist) {
            next_ = P(10, 68);
            rememberedState_ = state_;
        }
        nameIndex_ = 1;
        c_->ld_name_start = cursor_ - 1;
        c_->nl_name_begun = 0;
        return kGoOn;
    case 12:
        return ValueStart();
    case 13:
        return RepeatCount();
    case 14:
        return IntegerEnds();
    case 15:
        c_->ld_ieee_kind = 0;
        AppendText(comma_ && byte_ == ',' ? '.' : static_cast<char>(byte_));
        return kGoOn;
    case 16: {
        char bad[2] = {static_cast<char>(byte_), '\0'};
        if (Report(97, bad) == kStatementStops) return Stop();
        if (digits_ > 0) {
            AppendText('0');
            uint32_t keep = next_;
            Digit(0);
            next_ = keep;
        }
        return kGoOn;
    }
    case 17: {
        int upper = Upper(byte_);
        if (!NinetiesLevel(c_) && (upper == 'N' || upper == 'I')) {
            Restart();
            next_ = upper == 'N' ? 117 : 124;
            return kGoOn;
        }
        [[fallthrough]];
    }
    case 18:
        if (byte_ == ')' && type_ == 5) return Perform(20);
        {
            char bad[2] = {static_cast<char>(byte_), '\0'};
            if (Report(97, bad) == kStatementStops) return Stop();
        }
        AppendText('0');
        return kGoOn;
    case 19:
        AppendText('E');
        AppendText(static_cast<char>(byte_));
        return kGoOn;
    case 20:
        if (textLength_ == 0) {
            AppendText('0');
        } else if (c_->ld_blank_zero && byte_ == ' ') {
            rememberedLength_ = textLength_;
            next_ = P(29, 85);
            redispatch_ = true;
            return kGoOn;
        }
        TerminateText();
        return Done(next_ == 3 || type_ == 5 ? Finish::F1 : Finish::F3);
    case 21:
        AppendText('E');
        return kGoOn;
    case 22:
        if (marker_ == 0) {
            uint32_t keep = next_;  // blanks stay significant after an overflow
            Digit(0);
            next_ = keep;
        }
        return kGoOn;
    case 23:
        return Done(Finish::F1);
    case 24:
        StoreInteger();
        c_->nl_name_pending = 0;
        return Done(Finish::F2);
    case 25:
        AppendText('0');
        return kGoOn;
    case 26:
        textLength_ = rememberedLength_;
        TerminateText();
        c_->nl_name_pending = 0;
        return Done(Finish::F2);
    case 27:
        TerminateText();
        return Done(Finish::F1);
    case 28:
    case 29:
        LDItemNotComplex(c_);
        return Stop();
    case 30:
        return Done(Finish::F3);
    case 31:
        c_->ld_int_value = Upper(byte_) == 'T' ? 1 : 0;
        c_->ld_overflow_size = 0;
        return kGoOn;
    case 32:
        next_ = P(15, 71);
        redispatch_ = true;
        return kGoOn;
    case 33:
        if (type_ == 0 || type_ == 3) {
            Rewind(false);
            next_ = P(15, 71);
            return kGoOn;
        }
        if (LDItemNotLogical(c_) == kStatementStops) return Stop();
        c_->ld_type_error = 1;
        return kGoOn;
    case 34:
        return Fin();
    case 35:
        return StepBackOverEquals();
    case 36:
        if (type_ == 4) {
            next_ = P(20, 76);
            Rewind(false);
            return kGoOn;
        }
        return Done(next_ == 3 ? Finish::F2 : Finish::F4);
    case 37:
        type_ = 0;
        wordIsName_ = true;
        Rewind(true);
        next_ = 1;
        return kGoOn;
    case 38:
        if (type_ == 4) {
            Rewind(false);
            next_ = P(20, 76);
            return kGoOn;
        }
        return Done(Finish::F2);
    case 39:
        if (c_->ld_undelimited_ok) return Perform(40);
        if (ErrorHandler(kClassConversion, kKindError, 49, 49, 0u) == kStatementStops) return Stop();
        next_ = P(45, 101);
        return kGoOn;
    case 40:
        if (c_->ld_char_room > 0) {
            *c_->ld_char_dest++ = static_cast<char>(byte_);
            c_->ld_char_room--;
        }
        return kGoOn;
    case 41:
        LDBlankFillCharacter(c_);
        if (next_ == 3 && c_->ld_repeat > 1) next_ = P(13, 69);
        return Fin();
    case 42:
        LDBlankFillCharacter(c_);
        if (StandardLevel(c_)) {
            LDReportSyntaxError(c_);
            return Stop();
        }
        return Done(Finish::F1);
    case 43:
        Restart();
        textLength_ = 0;
        c_->nl_equal_seen = 0;
        c_->ld_ieee_kind = 0;
        c_->ld_class_map[11] = 11;
        c_->ld_class_map[12] = 12;
        redispatch_ = true;
        return kGoOn;
    case 44:
        nameIndex_ = 0;
        return kGoOn;
    case 45:
        next_ = P(46, 102);
        if (!c_->ld_at_record_start && !SkipRecord()) return Stop();
        return kGoOn;
    case 46:
    case 47: {
        bool ending = action == 47;
        const char* name = c_->nl_group_name;
        int32_t length = c_->nl_group_length;
        bool matches;
        if (ending) {
            matches = nameIndex_ == length;
        } else {
            matches = nameIndex_ < length && (Upper(byte_) == Upper(static_cast<unsigned char>(name[nameIndex_])) &&
                                              (!c_->nl_mixed_case || byte_ == name[nameIndex_]));
        }
        if (matches) {
            if (!ending) {
                ++nameIndex_;
                return kGoOn;
            }
            return Done(redispatching_ ? Finish::F2 : Finish::F4);
        }
        next_ = ending ? P(46, 102) : 46;
        if (!c_->ld_at_record_start && !SkipRecord()) return Stop();
        return kGoOn;
    }
    case 48:
    case 54:
        Report(90);
        return Stop();
    case 49:
        nameIndex_ = 1;
        c_->ld_name_start = cursor_ - 1;
        c_->nl_name_begun = 0;
        return kGoOn;
    case 50:
        c_->nl_name_begun = 0;
        c_->nl_end_seen = 1;
        c_->ld_pending_char = -1;
        Commit();
        c_->ld_state = state_;
        return kStopped;
    case 51:
        if (c_->nl_name_begun == 0) {
            Report(90);
            return Stop();
        }
        return Done(Finish::F1);
    case 52:
        ++nameIndex_;
        return kGoOn;
    case 53:
        c_->ld_name_length = static_cast<int32_t>(cursor_ - c_->ld_name_start) - 1;
        c_->nl_name_pending = 1;
        if (byte_ == '=') c_->nl_equal_seen = 1;
        return Done(redispatching_ ? Finish::F2 : Finish::F4);
    case 55:
    case 57:
    case 58: {
        ++nameIndex_;
        int wanted = action == 55 ? 'E' : action == 57 ? 'N' : 'D';
        if (Upper(byte_) != wanted) next_ = P(9, 67);
        return kGoOn;
    }
    case 56:
        Rewind(false);
        if (rememberedState_ == P(40, 96)) {
            nameIndex_ = 0;
            c_->ld_name_start = buffer_;
            c_->nl_name_begun = 0;
            next_ = P(9, 67);
            return kGoOn;
        }
        if (c_->nl_name_pending) {
            next_ = 54;
            return kGoOn;
        }
        c_->array_abandon = 1;
        c_->ld_null_value = 1;
        return Done(Finish::F4);
    case 59:
        c_->nl_equal_seen = 1;
        return kGoOn;
    case 60:
        if (!c_->nl_equal_seen) Report(213);
        next_ = P(2, 61);
        redispatch_ = true;
        return kGoOn;
    case 61:
        redispatch_ = true;
        return kGoOn;
    case 62:
    case 63:
        Report(45);
        return Stop();
    case 64:
        c_->ld_subscript_end = static_cast<uint8_t>(byte_);
        if (byte_ == ')') {
            c_->ld_null_value = 1;
            next_ = P(59, 114);
            return Done(Finish::F4);
        }
        return kGoOn;
    case 66:
        return Done(redispatching_ ? Finish::F2 : Finish::F4);
    case 67:
        return Done(Finish::F2);
    case 68:
        return FailSpecial();
    case 69:
    case 75:
    case 77:
    case 78: {
        int wanted = action == 69 ? 'A' : action == 75 ? 'N' : action == 77 ? 'I' : 'T';
        return Upper(byte_) == wanted ? kGoOn : FailSpecial();
    }
    case 70:
        if (Upper(byte_) != 'N') return FailSpecial();
        c_->ld_ieee_kind = TextIsNegative() ? 5 : 2;
        next_ = P(119, 121);
        return kGoOn;
    case 71:
        return Upper(byte_) == 'Q' && !StandardLevel(c_) ? kGoOn : FailSpecial();
    case 72:
        if (Upper(byte_) != 'S' || StandardLevel(c_)) return FailSpecial();
        c_->ld_ieee_kind = TextIsNegative() ? 6 : 3;
        return kGoOn;
    case 73: {
        int upper = Upper(byte_);
        if (upper == 'S') return kGoOn;
        bool word = (upper >= 'A' && upper <= 'Z') || (byte_ >= '0' && byte_ <= '9') || byte_ == '_';
        if (!word) return FailSpecial();
        next_ = 123;
        return kGoOn;
    }
    case 74:
        if (state_ == 122) c_->ld_ieee_kind = TextIsNegative() ? 6 : 3;
        next_ = P(115, 116);
        return kGoOn;
    case 76:
        if (Upper(byte_) != 'F') return FailSpecial();
        c_->ld_ieee_kind = TextIsNegative() ? 4 : 1;
        next_ = P(126, 128);
        return kGoOn;
    case 79:
        if (Upper(byte_) != 'Y') return FailSpecial();
        next_ = P(115, 116);
        return kGoOn;
    case 80:
        if (class_ != kLDClassEndOfFile) {
            c_->ld_pending_char = byte_;
            c_->ld_pending_class = class_;
        }
        Commit();
        c_->ld_state = state_;
        return kStopped;
    default:
        return kGoOn;
    }
}

int32_t Scanner::Run(bool resume) {
    LocalContext* c = c_;
    buffer_ = c->ld_rescan_buffer;
    limit_ = buffer_ + c->ld_rescan_size;
    cursor_ = resume ? c->ld_rescan_cursor : buffer_;
    fill_ = buffer_ + c->ld_rescan_fill;
    bool replay = rescan_;
    if (rescan_ && cursor_ >= fill_) rescan_ = false;
    bool dispatchPending = c->ld_pending_char >= 0;
    if (!replay) {
        if (!resume) {
            c->ld_repeat = 1;
            c->ld_null_value = 0;
            if (dispatchPending && !Append(static_cast<char>(c->ld_pending_char))) return 0;
        }
    } else if (!resume && rescan_) {
        // The pending byte is in the buffer, at the place where the replay will meet it.
        dispatchPending = false;
    }
    state_ = c->ld_state;
    bool fromPending = dispatchPending;
    if (fromPending) {
        byte_ = c->ld_pending_char;
        class_ = c->ld_pending_class;
    }
    for (;;) {
        if (!fromPending) {
            if (BetweenValues(state_)) SkipBlanksInPlace();
            if (!Fetch()) {
                Commit();
                c->ld_state = state_;
                return 0;
            }
        }
        fromPending = false;
        redispatching_ = false;
        for (;;) {
            const LDTransition& entry = _ldscan_transition.rows[state_][class_];
            next_ = entry.next;
            // The actions of digits are most of the work; they are done here, not through
            // the switch.
            Outcome outcome = kGoOn;
            switch (entry.action) {
            case 0:
                break;
            case 7:
                AppendText(static_cast<char>(byte_));
                Digit(byte_ - '0');
                break;
            case 15:
                c->ld_ieee_kind = 0;
                AppendText(comma_ && byte_ == ',' ? '.' : static_cast<char>(byte_));
                break;
            default:
                outcome = Perform(entry.action);
                break;
            }
            if (outcome == kFinished) return 1;
            if (outcome == kStopped) return 0;
            state_ = next_;
            if (state_ == 0) {
                // The dead state accepts nothing, not even the end of the file: the text
                // can no longer be a value.
                LDReportSyntaxError(c);
                Stop();
                return 0;
            }
            if (!redispatch_) break;
            redispatch_ = false;
            redispatching_ = true;
        }
        if (uint8_t action = kLDDigitRunAction[state_]; action != 0 && !rescan_) TakeDigitRun(action);
    }
}

}  // namespace

int32_t LDScan(LocalContext* context, int32_t rescan, int32_t resume) {
    context->ld_type_error = 0;
    if (!rescan && !resume && PlainNumberInPlace(context)) return 1;
    context->ld_class_map[11] = 11;
    context->ld_class_map[12] = 12;
    context->ld_class_map[3] = IsInternal(context) ? 0 : 3;
    Scanner scanner(context, rescan != 0);
    return scanner.Run(resume != 0);
}

int32_t LDGrowRescanBuffer(LocalContext* context) {
    int32_t size = context->ld_rescan_size + kRescanStep;
    char* grown = static_cast<char*>(std::malloc(static_cast<size_t>(size)));
    if (grown == nullptr) {
        if (context->unit != nullptr) context->unit->permanentError = 1;
        ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
        context->itemsStopped = 1;
        return 0;
    }
    char* old = context->ld_rescan_buffer;
    if (old != nullptr) {
        std::memcpy(grown, old, static_cast<size_t>(context->ld_rescan_size));
        if (context->ld_name_start != nullptr) context->ld_name_start = grown + (context->ld_name_start - old);
        context->ld_rescan_cursor = grown + (context->ld_rescan_cursor - old);
        std::free(old);
    } else {
        context->ld_rescan_cursor = grown;
    }
    context->ld_rescan_buffer = grown;
    context->ld_rescan_size = size;
    return 1;
}

int32_t LDReadInit(LocalContext* context) {
    if (!LDGrowRescanBuffer(context)) return 0;
    context->ld_rescan_fill = 0;
    for (uint32_t i = 0; i < kLDScanClasses; ++i) context->ld_class_map[i] = i;
    return 1;
}

void LDReadCleanup(LocalContext* context) {
    std::free(context->ld_rescan_buffer);
    context->ld_rescan_buffer = nullptr;
    context->ld_rescan_cursor = nullptr;
    context->ld_name_start = nullptr;
    context->ld_rescan_size = 0;
    context->ld_rescan_fill = 0;
}

// ---- Reports ----

namespace {

int32_t ReportByFile(LocalContext* context, int32_t fileMessage, int32_t internalMessage) {
    if (IsInternal(context)) return ErrorHandler(kClassConversion, kKindError, internalMessage, internalMessage, 0u);
    return ErrorHandler(kClassConversion, kKindError, fileMessage, fileMessage, ArgText(1),
                        UnitNameForMessages(context->unit), 0u);
}

}  // namespace

int32_t LDReportSyntaxError(LocalContext* context) {
    return context->ld_in_namelist ? ReportByFile(context, 86, 87) : ReportByFile(context, 7, 8);
}

int32_t LDItemNotLogical(LocalContext* context) { return ReportByFile(context, 41, 42); }

int32_t LDItemNotComplex(LocalContext* context) { return ReportByFile(context, 43, 44); }

int32_t LDEndOfFileError(LocalContext* context) {
    IORaiseEndOfFile(context);
    return context->status != 0 ? kStatementStops : kRecover;
}

void LDBlankFillCharacter(LocalContext* context) {
    if (context->ld_char_room > 0) std::memset(context->ld_char_dest, ' ', static_cast<size_t>(context->ld_char_room));
    context->ld_char_dest += context->ld_char_room;
    context->ld_char_room = 0;
}
