// The converters of every processor.
#include "codec/isa_scalar.h"
#include "codec/kernels.h"

namespace ribkit {
constinit const kernel_table scalar_kernels = all_layouts::kernels<scalar>();
} // namespace ribkit
