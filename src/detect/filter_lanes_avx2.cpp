// The lanes' run for a vector unit of four doubles with fused multiply-add; built with that
// unit's flags where the compiler targets x86-64, and called only on a machine that has it.
#include "detect/filter_lanes_kernel.h"

namespace ardel::lanes {

bool RunAvx2(const Args& a) { return Run<4>(a); }

}  // namespace ardel::lanes
