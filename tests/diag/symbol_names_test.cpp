// Symbol names as a traceback shows them, against c++filt's readings of the same names
// (without the return type c++filt puts before a template function).
#include "diag/symbol_names.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

std::string Readable(const char* symbol, size_t capacity = 20000) {
    std::string out(capacity, '\0');
    size_t length = diag::ReadableName(symbol, out.data(), capacity);
    EXPECT_EQ(length, std::strlen(out.c_str()));
    return out.substr(0, length);
}

TEST(SymbolNames, AreTheNamesAsWritten) {
    struct Case {
        const char* symbol;
        const char* readable;
    };
    const Case cases[] = {
        {"_Z11level_threei", "level_three(int)"},
        {"_ZN5outer6Widget4deepIdEEiT_PKc", "outer::Widget::deep<double>(double, char const*)"},
        {"_ZNSt6vectorIiSaIiEE9push_backERKi", "std::vector<int, std::allocator<int> >::push_back(int const&)"},
        {"_ZN3foo3BarC2Ev", "foo::Bar::Bar()"},
        {"_ZN3foo3BarD1Ev", "foo::Bar::~Bar()"},
        {"_ZNK3foo3Bar3getEv", "foo::Bar::get() const"},
        {"_ZN12_GLOBAL__N_14helpEv", "(anonymous namespace)::help()"},
        {"_ZplRK1AS1_", "operator+(A const&, A const&)"},
        {"_Z3sumIJidEEvDpT_", "sum<int, double>(int, double)"},
        {"_ZZ4mainE5local", "main::local"},
        {"_ZN9__gnu_cxx13new_allocatorIcE8allocateEmPKv",
         "__gnu_cxx::new_allocator<char>::allocate(unsigned long, void const*)"},
        {"_Z1gA10_i", "g(int [10])"},
        {"_Z5counti.cold", "count(int) [clone .cold]"},
        {"_ZN2ns1fB5cxx11Ev", "ns::f[abi:cxx11]()"},
        {"_ZSt4movePi", "std::move(int*)"},
        {"_Z1hSt6vectorIiSaIiEES1_",
         "h(std::vector<int, std::allocator<int> >, std::vector<int, std::allocator<int> >)"},
        {"_Z7processRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE",
         "process(std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> > const&)"},
        {"_ZN1AcviEv", "A::operator int()"},
        {"_Z3maxIiET_S0_S0_", "max<int>(int, int)"},
        {"_ZL10TraceThreev", "TraceThree()"},
        {"_ZZ4mainENKUliE_clEi", "main::{lambda(int)#1}::operator()(int) const"},
        {"_ZZ4mainENKUlvE0_clEv", "main::{lambda()#2}::operator()() const"},
        {"_ZNSt17_Function_handlerIFvvEZ4mainEUlvE_E9_M_invokeERKSt9_Any_data",
         "std::_Function_handler<void(), main::{lambda()#1}>::_M_invoke(std::_Any_data const&)"},
        // Fortran module procedures, and names that are no C++.
        {"__solver_MOD_step", "solver::step"},
        {"__solver_NMOD_step", "solver::step"},
        {"MAIN__", "MAIN__"},
        {"compute_", "compute_"},
        {"main", "main"},
        // What cannot be read is shown as it is.
        {"_Z", "_Z"},
        {"_ZN3foo", "_ZN3foo"},
        {"_Z1fS5_", "_Z1fS5_"},
        {"_Z1fT_", "_Z1fT_"},
        {"_Z999999999x", "_Z999999999x"},
    };
    for (const Case& c : cases) EXPECT_EQ(Readable(c.symbol), c.readable) << c.symbol;
}

TEST(SymbolNames, AreCutToTheBufferAndNeverOverrunIt) {
    char out[8];
    std::memset(out, 'X', sizeof out);
    EXPECT_EQ(diag::ReadableName("_ZN5outer6Widget4deepIdEEiT_PKc", out, 6), 5u);
    EXPECT_STREQ(out, "outer");
    EXPECT_EQ(out[6], 'X');
    EXPECT_EQ(diag::ReadableName("__m_MOD_procedure", out, 6), 5u);
    EXPECT_STREQ(out, "m::pr");
}

// Deep nesting and long runs of substitutions end in the mangled name, not a fault.
TEST(SymbolNames, SurviveDeepAndHostileNames) {
    std::string deep = "_Z1f";
    for (int i = 0; i < 5000; ++i) deep += "P";
    deep += "i";
    EXPECT_EQ(Readable(deep.c_str()), deep);
    std::string wide = "_Z1f";
    for (int i = 0; i < 300; ++i) wide += "PiS_";
    EXPECT_FALSE(Readable(wide.c_str()).empty());
}

}  // namespace
