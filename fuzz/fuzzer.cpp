// libFuzzer's way into one of the inputs.
#include "fuzz/inputs.h"

#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0; // what displays print is not looked at
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) { return RIBKIT_INPUT(data, size); }
