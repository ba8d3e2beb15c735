// libFuzzer's target for the checks and all that follows acceptance.
#include "fuzz/inputs.h"

#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0; // what displays print is not looked at
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) { return check_input(data, size); }
