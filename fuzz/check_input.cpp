// One input of the check target. The buffers are of just the message's size, so that a sanitizer sees every step aside.
#include "codec/witness/naive_check.h"
#include "fuzz/inputs.h"
#include "fuzz/openers.h"

#include <cstdlib>
#include <memory>
#include <string>

using namespace ribkit;

int check_input(const uint8_t *data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const fuzz::opener &how = fuzz::openers()[*data % fuzz::openers().size()];
    const auto length = static_cast<uint32_t>(size - 1);
    const auto message = std::make_unique_for_overwrite<uint8_t[]>(length);
    const auto scratch = std::make_unique_for_overwrite<uint8_t[]>(length);
    std::copy(data + 1, data + size, message.get());
    std::copy(data + 1, data + size, scratch.get());
    rib_check_report report{};
    const uint32_t verdict = how.check(message.get(), length, &report);
    if (verdict == 0) {
        fuzz::open(how, {message.get(), scratch.get(), length});
    } else {
        char line[256];
        if (rib_check_report_str(&report, line, sizeof line) >= static_cast<int>(sizeof line)) {
            std::abort();
        }
    }
    if (witness::find_pair(how.name) != nullptr && verdict != witness::verdict(how.name, {data + 1, length})) {
        std::abort();
    }
    return 0;
}
