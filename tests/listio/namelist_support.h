// Plays the compiler for namelist statements: builds a group record and runs
// WRITE(u, NML=g) and READ(u, NML=g) on internal and external files.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "tests/support/fortran.h"
#include "vrn90.h"

namespace vrntest {

constexpr uint32_t NamelistWrite = VRN_STATEMENT_FLAGS(VRN_KIND_NAMELIST, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t NamelistRead = VRN_STATEMENT_FLAGS(VRN_KIND_NAMELIST, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);

// An array RTD of up to three dimensions, given in Fortran order: {lower, extent} each,
// dense from `base` with `elementLength` bytes an element.
struct ArrayDescriptor {
    alignas(8) unsigned char storage[sizeof(RTDArray) + RTD_MAX_RANK * sizeof(RTDDimension)] = {};
    RTDArray* head() { return reinterpret_cast<RTDArray*>(storage); }
};
ArrayDescriptor DescribeArray(void* base, int32_t elementLength, uint8_t dataType,
                              std::vector<std::pair<int32_t, int32_t>> bounds);

// A group whose record the compiler would lay out statically.
class Group {
public:
    explicit Group(std::string name) : name_(std::move(name)) {}
    Group& Scalar(const std::string& name, void* address, uint32_t type, int32_t kind, int32_t length = 0);
    Group& Array(const std::string& name, const void* rtd, uint32_t type, int32_t kind, int32_t length = 0);
    Group& Derived(const std::string& name, void* address, const VrnNamelistType* type, const void* rtd = nullptr);
    const VrnNamelistGroup* record();

private:
    std::string name_;
    std::deque<std::string> names_;
    std::vector<VrnNamelistMember> members_;
    std::vector<unsigned char> storage_;
};

// WRITE (internal, NML=group): the records, trailing blanks cut, each ended by "\n".
std::string WriteInternal(Group& group, uint32_t recordLength = 80, uint32_t options = 0, int32_t* iostat = nullptr,
                          Specifiers* specifiers = nullptr);
// READ (internal, NML=group) from records separated by "\n"; the IOSTAT= value.
int32_t ReadInternal(Group& group, const std::string& records, uint32_t options = 0, Specifiers* specifiers = nullptr);

// The same on an external unit that is open.
int32_t WriteUnit(int32_t unit, Group& group, uint32_t options = 0, Specifiers* specifiers = nullptr);
int32_t ReadUnit(int32_t unit, Group& group, uint32_t options = 0, Specifiers* specifiers = nullptr);

}  // namespace vrntest
