// A demangler for the names g++ gives functions, and the names Fortran compilers give
// module procedures ("__m_MOD_p" and "__m_NMOD_p"). It covers what a traceback meets:
// namespaces, classes, templates, constructors, destructors, operators, local names,
// the parameter types and substitutions; a name outside that is shown mangled.
#include "diag/symbol_names.h"

#include <cstdint>
#include <cstring>

namespace diag {
namespace {

constexpr size_t kWorkSize = 2048;
constexpr int kMaxSubstitutions = 64;
constexpr int kMaxTemplateArguments = 16;
constexpr int kMaxDepth = 64;

struct Span {
    size_t start = 0, end = 0;
};

struct BuiltinType {
    char code;
    const char* name;
};
constexpr BuiltinType kBuiltins[] = {
    {'v', "void"},          {'w', "wchar_t"},       {'b', "bool"},     {'c', "char"},
    {'a', "signed char"},   {'h', "unsigned char"}, {'s', "short"},    {'t', "unsigned short"},
    {'i', "int"},           {'j', "unsigned int"},  {'l', "long"},     {'m', "unsigned long"},
    {'x', "long long"},     {'y', "unsigned long long"},               {'n', "__int128"},
    {'o', "unsigned __int128"},                     {'f', "float"},    {'d', "double"},
    {'e', "long double"},   {'g', "__float128"},    {'z', "..."},
};

struct Operator {
    const char* code;
    const char* name;
};
constexpr Operator kOperators[] = {
    {"nw", "new"},   {"na", "new[]"}, {"dl", "delete"}, {"da", "delete[]"}, {"ps", "+"},   {"ng", "-"},
    {"ad", "&"},     {"de", "*"},     {"co", "~"},      {"pl", "+"},        {"mi", "-"},   {"ml", "*"},
    {"dv", "/"},     {"rm", "%"},     {"an", "&"},      {"or", "|"},        {"eo", "^"},   {"aS", "="},
    {"pL", "+="},    {"mI", "-="},    {"mL", "*="},     {"dV", "/="},       {"rM", "%="},  {"aN", "&="},
    {"oR", "|="},    {"eO", "^="},    {"ls", "<<"},     {"rs", ">>"},       {"lS", "<<="}, {"rS", ">>="},
    {"eq", "=="},    {"ne", "!="},    {"lt", "<"},      {"gt", ">"},        {"le", "<="},  {"ge", ">="},
    {"ss", "<=>"},   {"nt", "!"},     {"aa", "&&"},     {"oo", "||"},       {"pp", "++"},  {"mm", "--"},
    {"cm", ","},     {"pm", "->*"},   {"pt", "->"},     {"cl", "()"},       {"ix", "[]"},
};

class Demangler {
public:
    explicit Demangler(const char* mangled) : in_(mangled) {}

    // The readable name into `out`; false when the name is not one this demangler reads.
    bool Run(char* out, size_t capacity) {
        if (!Consume("_Z")) return false;
        if (!Encoding(true)) return false;
        // What follows a '.' is a clone the compiler made: ".isra.0", ".cold".
        if (*in_ == '.') {
            Put(" [clone ");
            Put(in_);
            Put("]");
            in_ += std::strlen(in_);
        }
        if (*in_ != '\0' || overflow_) return false;
        size_t length = 0;
        for (size_t i = 0; i < used_ && length + 1 < capacity; ++i) {
            if (i >= hidden_.start && i < hidden_.end) continue;
            out[length++] = work_[i];
        }
        out[length] = '\0';
        return true;
    }

private:
    // Output ---------------------------------------------------------------------------
    void Put(const char* text) {
        while (*text != '\0') PutChar(*text++);
    }
    void PutChar(char c) {
        if (used_ < kWorkSize) {
            work_[used_++] = c;
        } else {
            overflow_ = true;
        }
    }
    void PutSpan(Span span) {
        for (size_t i = span.start; i < span.end; ++i) PutChar(work_[i]);
    }
    void PutSource(const char* text, size_t length) {
        for (size_t i = 0; i < length; ++i) PutChar(text[i]);
    }
    char LastOutput() const { return used_ > 0 ? work_[used_ - 1] : '\0'; }

    // Input ----------------------------------------------------------------------------
    bool Consume(const char* text) {
        size_t length = std::strlen(text);
        if (std::strncmp(in_, text, length) != 0) return false;
        in_ += length;
        return true;
    }
    bool Peek(char c) const { return *in_ == c; }
    bool Number(uint64_t* value) {
        if (*in_ < '0' || *in_ > '9') return false;
        *value = 0;
        while (*in_ >= '0' && *in_ <= '9') {
            *value = *value * 10 + static_cast<uint64_t>(*in_++ - '0');
            if (*value > 100000) return false;
        }
        return true;
    }

    void AddSubstitution(Span span) {
        if (substitutionCount_ < kMaxSubstitutions) substitutions_[substitutionCount_++] = span;
    }

    // Grammar --------------------------------------------------------------------------
    bool Encoding(bool top) {
        if (++depth_ > kMaxDepth) return false;
        bool templated = false, constructorLike = false;
        const char* qualifiers = nullptr;
        if (!Name(&templated, &constructorLike, &qualifiers, top)) return false;
        if (*in_ == '\0' || *in_ == '.' || *in_ == 'E') {
            --depth_;
            return true;  // a variable, or a name without its types
        }
        if (templated && !constructorLike) {
            // The return type of a template function comes first: read, not shown.
            Span returned{used_, 0};
            if (!Type()) return false;
            returned.end = used_;
            if (top) hidden_ = returned;
        }
        PutChar('(');
        if (Consume("v") && (*in_ == '\0' || *in_ == '.' || *in_ == 'E')) {
            PutChar(')');
        } else {
            bool first = true;
            while (*in_ != '\0' && *in_ != '.' && *in_ != 'E') {
                if (!first) Put(", ");
                first = false;
                if (!Type()) return false;
            }
            PutChar(')');
        }
        if (qualifiers != nullptr) Put(qualifiers);
        --depth_;
        return true;
    }

    bool Name(bool* templated, bool* constructorLike, const char** qualifiers, bool function) {
        if (Peek('N')) return NestedName(templated, constructorLike, qualifiers, function);
        if (Peek('Z')) return LocalName(templated, constructorLike, qualifiers);
        Span start{used_, 0};
        if (Consume("St")) {
            Put("std::");
            if (!UnqualifiedName(constructorLike)) return false;
        } else if (Peek('S')) {
            if (!Substitution()) return false;
            if (!Peek('I')) return false;  // a substitution alone names no function
        } else if (!UnqualifiedName(constructorLike)) {
            return false;
        }
        if (Peek('I')) {
            start.end = used_;
            AddSubstitution(start);
            if (!TemplateArguments(true)) return false;
            *templated = true;
        }
        return true;
    }

    bool NestedName(bool* templated, bool* constructorLike, const char** qualifiers, bool function) {
        Consume("N");
        static const char* const kConst = " const";
        static const char* const kVolatile = " volatile";
        static const char* const kConstVolatile = " const volatile";
        bool isRestrict = Consume("r");
        bool isVolatile = Consume("V");
        bool isConst = Consume("K");
        (void)isRestrict;
        if (isConst && isVolatile) {
            *qualifiers = kConstVolatile;
        } else if (isConst) {
            *qualifiers = kConst;
        } else if (isVolatile) {
            *qualifiers = kVolatile;
        }
        Consume("R") || Consume("O");
        Span whole{used_, 0};
        bool first = true;
        while (!Consume("E")) {
            if (*in_ == '\0') return false;
            *templated = false;
            if (Peek('I')) {
                if (first) return false;
                if (!TemplateArguments(function)) return false;
                *templated = true;
            } else {
                if (!first) Put("::");
                if (Consume("St")) {
                    Put("std");
                } else if (Peek('S')) {
                    if (!Substitution()) return false;
                } else if (Peek('T')) {
                    if (!TemplateParameter()) return false;
                } else {
                    *constructorLike = false;
                    if (!UnqualifiedName(constructorLike)) return false;
                }
            }
            first = false;
            whole.end = used_;
            // Every prefix is a candidate; the whole name of a function is not.
            if (!Peek('E') || !function) AddSubstitution(whole);
        }
        return true;
    }

    bool LocalName(bool* templated, bool* constructorLike, const char** qualifiers) {
        Consume("Z");
        if (!Encoding(false) || !Consume("E")) return false;
        Put("::");
        if (Consume("s")) {
            Put("string literal");
        } else {
            bool innerTemplated = false;
            const char* innerQualifiers = nullptr;
            if (!Name(&innerTemplated, constructorLike, &innerQualifiers, true)) return false;
            *templated = innerTemplated;
            *qualifiers = innerQualifiers;
        }
        // A discriminator tells apart entities of one name in one function.
        if (Consume("_")) {
            if (Consume("_")) {
                uint64_t ignored;
                Number(&ignored);
                Consume("_");
            } else {
                while (*in_ >= '0' && *in_ <= '9') ++in_;
            }
        }
        return true;
    }

    bool UnqualifiedName(bool* constructorLike) {
        uint64_t length;
        // A name of internal linkage (a static function) is marked L.
        if (Peek('L') && in_[1] >= '0' && in_[1] <= '9') ++in_;
        if (Consume("Ul")) return Lambda();
        if (Consume("Ut")) {
            Put("{unnamed type#");
            return Ordinal();
        }
        if (*in_ >= '0' && *in_ <= '9') {
            if (!Number(&length) || std::strlen(in_) < length) return false;
            lastName_ = in_;
            lastNameLength_ = static_cast<size_t>(length);
            // An anonymous namespace is "_GLOBAL__N_1".
            if (length >= 10 && std::strncmp(in_, "_GLOBAL__N", 10) == 0) {
                Put("(anonymous namespace)");
            } else {
                PutSource(in_, lastNameLength_);
            }
            in_ += length;
            // ABI tags: "B5cxx11" is shown as "[abi:cxx11]".
            while (Consume("B")) {
                if (!Number(&length) || std::strlen(in_) < length) return false;
                Put("[abi:");
                PutSource(in_, static_cast<size_t>(length));
                PutChar(']');
                in_ += length;
            }
            return true;
        }
        if ((Peek('C') && in_[1] >= '1' && in_[1] <= '5') || (Peek('D') && in_[1] >= '0' && in_[1] <= '5')) {
            if (lastName_ == nullptr) return false;
            if (Peek('D')) PutChar('~');
            PutSource(lastName_, lastNameLength_);
            in_ += 2;
            *constructorLike = true;
            return true;
        }
        if (Consume("cv")) {
            Put("operator ");
            *constructorLike = true;
            return Type();
        }
        if (Consume("li")) {
            Put("operator\"\" ");
            return Number(&length) && std::strlen(in_) >= length && (PutSource(in_, length), in_ += length, true);
        }
        for (const Operator& op : kOperators) {
            if (Consume(op.code)) {
                Put("operator");
                if (op.name[0] >= 'a' && op.name[0] <= 'z') PutChar(' ');
                Put(op.name);
                return true;
            }
        }
        return false;
    }

    // Ul <parameter types> E [number] _: "{lambda(int)#2}".
    bool Lambda() {
        Put("{lambda(");
        if (Peek('v') && in_[1] == 'E') ++in_;
        bool first = true;
        while (!Consume("E")) {
            if (*in_ == '\0') return false;
            if (!first) Put(", ");
            first = false;
            if (!Type()) return false;
        }
        Put(")#");
        return Ordinal();
    }

    // [number] _ as the ordinal it counts from 2 ("_" alone is 1), then "}".
    bool Ordinal() {
        uint64_t number = 0;
        if (!Consume("_")) {
            if (!Number(&number) || !Consume("_")) return false;
            ++number;
        }
        ++number;
        char digits[24];
        int count = 0;
        do {
            digits[count++] = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
        while (count > 0) PutChar(digits[--count]);
        PutChar('}');
        return true;
    }

    bool Substitution() {
        struct Abbreviation {
            const char* code;
            const char* name;
        };
        static constexpr Abbreviation kAbbreviations[] = {
            {"Sa", "std::allocator"}, {"Sb", "std::basic_string"}, {"Ss", "std::string"},
            {"Si", "std::istream"},   {"So", "std::ostream"},      {"Sd", "std::iostream"},
        };
        for (const Abbreviation& a : kAbbreviations) {
            if (Consume(a.code)) {
                Put(a.name);
                lastName_ = std::strrchr(a.name, ':') + 1;
                lastNameLength_ = std::strlen(lastName_);
                return true;
            }
        }
        if (!Consume("S")) return false;
        uint64_t index = 0;
        if (!Consume("_")) {
            uint64_t value = 0;
            while (*in_ != '_') {
                char c = *in_++;
                if (c >= '0' && c <= '9') {
                    value = value * 36 + static_cast<uint64_t>(c - '0');
                } else if (c >= 'A' && c <= 'Z') {
                    value = value * 36 + static_cast<uint64_t>(c - 'A' + 10);
                } else {
                    return false;
                }
                if (value > kMaxSubstitutions) return false;
            }
            ++in_;
            index = value + 1;
        }
        if (index >= static_cast<uint64_t>(substitutionCount_)) return false;
        PutSpan(substitutions_[index]);
        return true;
    }

    bool TemplateParameter() {
        if (!Consume("T")) return false;
        uint64_t index = 0;
        if (!Consume("_")) {
            if (!Number(&index) || !Consume("_")) return false;
            ++index;
        }
        if (index >= static_cast<uint64_t>(templateArgumentCount_)) return false;
        PutSpan(templateArguments_[index]);
        return true;
    }

    // I <argument>* E, shown as <a, b>. The outermost list of the function's name gives
    // the meanings of T_, T0_, ...
    bool TemplateArguments(bool record) {
        if (!Consume("I")) return false;
        if (record) templateArgumentCount_ = 0;
        PutChar('<');
        bool first = true;
        while (!Consume("E")) {
            if (*in_ == '\0') return false;
            if (!first) Put(", ");
            first = false;
            Span argument{used_, 0};
            if (Consume("L")) {
                if (!Literal()) return false;
            } else if (Consume("J")) {
                bool innerFirst = true;
                while (!Consume("E")) {
                    if (*in_ == '\0') return false;
                    if (!innerFirst) Put(", ");
                    innerFirst = false;
                    if (!Type()) return false;
                }
            } else if (!Type()) {
                return false;
            }
            argument.end = used_;
            if (record && templateArgumentCount_ < kMaxTemplateArguments) {
                templateArguments_[templateArgumentCount_++] = argument;
            }
        }
        if (LastOutput() == '>') PutChar(' ');
        PutChar('>');
        return true;
    }

    // L <type> <value> E: a number, shown as such (true and false for bool).
    bool Literal() {
        if (Consume("_Z")) return Encoding(false) && Consume("E");
        bool isBool = Peek('b');
        size_t before = used_;
        if (!Type()) return false;
        used_ = before;  // the type is understood from the value
        bool negative = Consume("n");
        const char* start = in_;
        while (*in_ >= '0' && *in_ <= '9') ++in_;
        if (isBool && in_ - start == 1) {
            Put(*start == '1' ? "true" : "false");
        } else {
            if (negative) PutChar('-');
            PutSource(start, static_cast<size_t>(in_ - start));
        }
        return Consume("E");
    }

    bool Type() {
        if (++depth_ > kMaxDepth || *in_ == '\0') return false;
        Span span{used_, 0};
        bool candidate = true;
        char c = *in_;
        bool done = false;
        for (const BuiltinType& builtin : kBuiltins) {
            if (c == builtin.code) {
                ++in_;
                Put(builtin.name);
                candidate = false;
                done = true;
                break;
            }
        }
        if (!done) {
            switch (c) {
            case 'P':
            case 'R':
            case 'O': {
                ++in_;
                if (!Type()) return false;
                Put(c == 'P' ? "*" : c == 'R' ? "&" : "&&");
                break;
            }
            case 'K':
            case 'V':
            case 'r': {
                ++in_;
                if (!Type()) return false;
                if (c != 'r') Put(c == 'K' ? " const" : " volatile");
                break;
            }
            case 'F': {
                ++in_;
                Consume("Y");
                if (!Type()) return false;
                PutChar('(');
                bool first = true;
                if (Peek('v') && in_[1] == 'E') ++in_;  // no parameters
                while (!Consume("E")) {
                    if (*in_ == '\0') return false;
                    if (!first) Put(", ");
                    first = false;
                    if (!Type()) return false;
                }
                PutChar(')');
                break;
            }
            case 'A': {
                ++in_;
                uint64_t extent = 0;
                bool sized = Number(&extent);
                if (!Consume("_") || !Type()) return false;
                Put(" [");
                if (sized) {
                    char digits[24];
                    int count = 0;
                    do {
                        digits[count++] = static_cast<char>('0' + extent % 10);
                        extent /= 10;
                    } while (extent != 0);
                    while (count > 0) PutChar(digits[--count]);
                }
                PutChar(']');
                break;
            }
            case 'D': {
                struct Special {
                    const char* code;
                    const char* name;
                };
                static constexpr Special kSpecials[] = {
                    {"Dn", "decltype(nullptr)"}, {"Da", "auto"},   {"Dc", "decltype(auto)"}, {"Ds", "char16_t"},
                    {"Di", "char32_t"},          {"Du", "char8_t"}, {"Dh", "half"},           {"Df", "decimal32"},
                    {"Dd", "decimal64"},         {"De", "decimal128"},
                };
                bool matched = false;
                for (const Special& special : kSpecials) {
                    if (Consume(special.code)) {
                        Put(special.name);
                        candidate = false;
                        matched = true;
                        break;
                    }
                }
                if (!matched) {
                    if (Consume("Dp")) {
                        // A pack expansion shows the pack's types themselves.
                        if (!Type()) return false;
                    } else if (Consume("DF")) {
                        uint64_t bits;
                        if (!Number(&bits) || !Consume("_")) return false;
                        Put("_Float");
                        char digits[8];
                        int count = 0;
                        do {
                            digits[count++] = static_cast<char>('0' + bits % 10);
                            bits /= 10;
                        } while (bits != 0);
                        while (count > 0) PutChar(digits[--count]);
                        candidate = false;
                    } else {
                        return false;
                    }
                }
                break;
            }
            case 'u': {
                ++in_;
                bool unused = false;
                if (!UnqualifiedName(&unused)) return false;
                break;
            }
            case 'S': {
                if (in_[1] == 't') {
                    in_ += 2;
                    Put("std::");
                    bool unused = false;
                    if (!UnqualifiedName(&unused)) return false;
                    if (Peek('I')) {
                        span.end = used_;
                        AddSubstitution(span);
                    }
                } else {
                    // A substitution is itself no new candidate; with arguments it is.
                    if (!Substitution()) return false;
                    candidate = Peek('I');
                }
                if (Peek('I') && !TemplateArguments(false)) return false;
                break;
            }
            case 'T': {
                if (!TemplateParameter()) return false;
                if (Peek('I')) {
                    span.end = used_;
                    AddSubstitution(span);
                    if (!TemplateArguments(false)) return false;
                }
                break;
            }
            case 'N':
            case 'Z': {
                bool templated = false, constructorLike = false;
                const char* qualifiers = nullptr;
                if (!Name(&templated, &constructorLike, &qualifiers, false)) return false;
                // A nested name added itself; a local one is added here.
                candidate = c == 'Z';
                break;
            }
            default: {
                if (c < '0' || c > '9') return false;
                bool unused = false;
                if (!UnqualifiedName(&unused)) return false;
                if (Peek('I')) {
                    span.end = used_;
                    AddSubstitution(span);
                    if (!TemplateArguments(false)) return false;
                }
                break;
            }
            }
        }
        span.end = used_;
        if (candidate) AddSubstitution(span);
        --depth_;
        return true;
    }

    const char* in_;
    char work_[kWorkSize];
    size_t used_ = 0;
    bool overflow_ = false;
    Span hidden_;
    Span substitutions_[kMaxSubstitutions];
    int substitutionCount_ = 0;
    Span templateArguments_[kMaxTemplateArguments];
    int templateArgumentCount_ = 0;
    const char* lastName_ = nullptr;
    size_t lastNameLength_ = 0;
    int depth_ = 0;
};

size_t Copy(const char* text, size_t length, char* out, size_t capacity) {
    if (capacity == 0) return 0;
    if (length > capacity - 1) length = capacity - 1;
    std::memcpy(out, text, length);
    out[length] = '\0';
    return length;
}

// "__m_MOD_p" (gfortran) and "__m_NMOD_p" as "m::p".
bool FortranModuleName(const char* symbol, char* out, size_t capacity, size_t* length) {
    if (std::strncmp(symbol, "__", 2) != 0) return false;
    const char* module = symbol + 2;
    const char* marker = std::strstr(module, "_MOD_");
    size_t markerLength = 5;
    if (const char* other = std::strstr(module, "_NMOD_"); other != nullptr && (marker == nullptr || other < marker)) {
        marker = other;
        markerLength = 6;
    }
    if (marker == nullptr || marker == module || marker[markerLength] == '\0') return false;
    size_t used = Copy(module, static_cast<size_t>(marker - module), out, capacity);
    used += Copy("::", 2, out + used, capacity - used);
    const char* procedure = marker + markerLength;
    used += Copy(procedure, std::strlen(procedure), out + used, capacity - used);
    *length = used;
    return true;
}

}  // namespace

size_t ReadableName(const char* symbol, char* out, size_t capacity) {
    if (capacity == 0) return 0;
    size_t length = 0;
    if (FortranModuleName(symbol, out, capacity, &length)) return length;
    if (std::strncmp(symbol, "_Z", 2) == 0) {
        Demangler demangler(symbol);
        if (demangler.Run(out, capacity)) return std::strlen(out);
    }
    return Copy(symbol, std::strlen(symbol), out, capacity);
}

}  // namespace diag
