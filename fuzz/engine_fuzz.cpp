// libFuzzer's target for the converters.
#include "fuzz/inputs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) { return engine_input(data, size); }
