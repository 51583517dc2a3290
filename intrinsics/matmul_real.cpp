// MATMUL of real results.
#include "intrinsics/matmul_member.h"
#include "intrinsics/matmul_real_members.h"

VRN_MATMUL_MEMBER(r4, R4Member)
VRN_MATMUL_MEMBER(r8, R8Member)
VRN_MATMUL_MEMBER(r16, R16Member)
VRN_MATMUL_STRASSEN(r4, R4Member, VRN_EXPORT)
VRN_MATMUL_STRASSEN(r8, R8Member, VRN_EXPORT)
VRN_MATMUL_STRASSEN(r16, R16Member, VRN_EXPORT)
