// The texts that a table cannot say: upper case, bits, and whole records.
#include "rib_text.h"

#include <cctype>
#include <cstring>

namespace {

constexpr size_t upper_case_limit = 40;

}

void rib_uuid_to_uc_str(uint32_t uuid, char *str) {
    rib_uuid_to_str(uuid, str);
    size_t length = std::strlen(str);
    if (length > upper_case_limit) {
        rib_str_len_set(str, upper_case_limit);
        length = upper_case_limit;
    }
    for (size_t i = 0; i < length; ++i) {
        str[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(str[i])));
    }
}
