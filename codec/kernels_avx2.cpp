// The converters of processors with AVX2; nothing here runs before the processor has been asked.
#include "codec/isa_avx2.h"
#include "codec/kernels.h"

namespace ribkit::codec {
constinit const kernel_table avx2_kernels = all_layouts::kernels<avx2>();
} // namespace ribkit::codec
