// One service a process, which answers as the test has set it.
#include "testing/fake_if_index.h"

#include "if_index.h"
#include <cstdio>

using namespace ribkit::testing;

namespace ribkit::testing {

fake_interfaces &interfaces() {
    static fake_interfaces service;
    return service;
}

} // namespace ribkit::testing

using ribkit::testing::interfaces;

int if_index_get_type(uint32_t if_index, uint8_t *type) {
    interfaces().asked = if_index;
    *type = interfaces().type;
    return interfaces().result;
}

int sprintf_if_index(char *str, uint32_t if_index) {
    return std::sprintf(str, "if%x%s", if_index, interfaces().suffix.c_str());
}
