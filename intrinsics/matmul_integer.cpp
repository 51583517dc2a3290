// MATMUL of integer results. Their Strassen members are reached only through the
// dispatchers.
#include "intrinsics/matmul_member.h"

using I1Member = NumericMember<I1>;
using I2Member = NumericMember<I2, I1>;
using I4Member = NumericMember<I4, I2, I1>;
using I8Member = NumericMember<I8, I4, I2, I1>;

VRN_MATMUL_MEMBER(i1, I1Member)
VRN_MATMUL_MEMBER(i2, I2Member)
VRN_MATMUL_MEMBER(i4, I4Member)
VRN_MATMUL_MEMBER(i8, I8Member)
