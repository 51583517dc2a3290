// Sets the floating-point rounding mode for a scope and gives the caller's mode back at
// its end, when it was another one.
#pragma once

#include <cfenv>

template <int Mode>
class RoundingScope {
public:
    RoundingScope() : entry_(std::fegetround()) {
        if (entry_ != Mode) std::fesetround(Mode);
    }
    ~RoundingScope() {
        if (entry_ != Mode) std::fesetround(entry_);
    }
    RoundingScope(const RoundingScope&) = delete;
    RoundingScope& operator=(const RoundingScope&) = delete;
    // The mode the caller had: what PROCESSOR_DEFINED means.
    int entry() const { return entry_; }

private:
    int entry_;
};
