// The real MATMUL members, which the complex base case also multiplies with.
#pragma once

#include "intrinsics/matmul_member.h"

using R4Member = NumericMember<R4, I8, I4, I2, I1>;
using R8Member = NumericMember<R8, R4, I8, I4, I2, I1>;
using R16Member = NumericMember<R16, R8, R4, I8, I4, I2, I1>;
