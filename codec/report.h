// Refusing a message or an image: the report filled, where there is one, and the result code that its rule stands for.
#pragma once

#include "rib_check.h"
#include "rib_codes.h"

namespace ribkit::codec {

inline uint32_t refuse(rib_check_report *report, const rib_check_report &why) {
    if (report != nullptr) {
        *report = why;
    }
    return why.rule == RIB_CHECK_EXCESS ? RIB_EXCESS_DATA : RIB_BAD_PARAMETERS;
}

} // namespace ribkit::codec
