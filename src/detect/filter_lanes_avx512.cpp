// The lanes' run for a vector unit of eight doubles; built with that unit's flags where the
// compiler targets x86-64, and called only on a machine that has it.
#include "detect/filter_lanes_kernel.h"

namespace ardel::lanes {

bool RunAvx512(const Args& a) { return Run<8>(a); }

}  // namespace ardel::lanes
