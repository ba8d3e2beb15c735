// The AVX2 converters for hosts of both byte orders, compiled as the library's are.
#include "codec/isa_avx2.h"
#include "codec/kernels.h"

namespace ribkit::codec {

extern const kernel_table avx2_big_kernels, avx2_little_kernels;
constinit const kernel_table avx2_big_kernels = all_layouts::kernels<avx2, std::endian::big>();
constinit const kernel_table avx2_little_kernels = all_layouts::kernels<avx2, std::endian::little>();

} // namespace ribkit::codec
