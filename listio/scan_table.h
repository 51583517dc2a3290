// The list-directed scanner's constant tables: the class of each byte and the state
// machine of 137 states over 25 classes, each entry a next state and an action.
#pragma once

#include <array>
#include <cstdint>

constexpr int kLDScanStates = 137;
constexpr int kLDScanClasses = 25;

// The class fed in at the end of a file; no byte has it.
constexpr uint32_t kLDClassEndOfFile = 6;

struct LDTransition {
    uint32_t next;
    uint32_t action;
};

struct LDScanTable {
    LDTransition rows[kLDScanStates][kLDScanClasses];
};

extern const std::array<uint8_t, 256> _LDCharClass;
extern const LDScanTable _ldscan_transition;
// For each state, the action (7 or 15) that every digit takes there while the state stays
// the same, or 0.
extern const std::array<uint8_t, kLDScanStates> kLDDigitRunAction;
