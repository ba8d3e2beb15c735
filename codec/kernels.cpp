// Which converters this process uses, where the processor leaves a choice.
#include "codec/kernels.h"

namespace ribkit::codec {

constinit const kernel_table scalar_kernels = all_layouts::kernels<scalar>();
constinit const kernel *active_kernels = scalar_kernels.data();

[[gnu::constructor]] static void choose_kernels() {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) {
        active_kernels = avx2_kernels.data();
    }
}

} // namespace ribkit::codec
