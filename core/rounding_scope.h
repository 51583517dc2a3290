// Sets the floating-point rounding mode for a scope and gives the caller's mode back at
// its end, when it was another one.
#pragma once

#include "core/float_status.h"

template <int Mode>
class RoundingScope {
public:
    RoundingScope() : entry_(float_status::GetRoundingMode()) {
        if (entry_ != Mode) float_status::SetRoundingMode(Mode);
    }
    ~RoundingScope() {
        if (entry_ != Mode) float_status::SetRoundingMode(entry_);
    }
    RoundingScope(const RoundingScope&) = delete;
    RoundingScope& operator=(const RoundingScope&) = delete;
    // The mode the caller had: what PROCESSOR_DEFINED means.
    int entry() const { return entry_; }

private:
    int entry_;
};
