// Which converters this process uses.
#include "codec/kernels.h"

namespace ribkit {

constinit const kernel *active_kernels = scalar_kernels.data();

#ifdef RIBKIT_HAS_AVX2
[[gnu::constructor]] static void choose_kernels() {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) {
        active_kernels = avx2_kernels.data();
    }
}
#endif

} // namespace ribkit
