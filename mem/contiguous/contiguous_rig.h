// What the tests of the contiguous allocator share: callbacks that write down what they are told, and images as words.
#pragma once

#include "rib_codes.h"
#include "rib_mem.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ribkit::mem {

using words = std::vector<uint32_t>;

/// What the callbacks were told, one line each.
inline std::string told;
/// How many masks succeed before one fails.
inline uint32_t masks_before_failure = 0xffffffff;

template <typename... Values> std::string text(const char *format, Values... values) {
    char line[200];
    std::snprintf(line, sizeof line, format, values...);
    return line;
}

inline uint32_t move(uint32_t destination, uint32_t source, uint32_t count) {
    told += text("move %u %u %u\n", destination, source, count);
    return 0x1234; // ignored
}

inline uint32_t mask(uint32_t segment, uint32_t first, uint32_t count) {
    told += text("mask %u %u %u\n", segment, first, count);
    return masks_before_failure-- == 0 ? 0xbad : 0;
}

inline words image_of(const struct cont *cont) {
    uint8_t *buffer = nullptr;
    uint32_t length = 0;
    EXPECT_EQ(cont_serialize(cont, &buffer, &length), RIB_OK);
    words image(length / 4);
    std::memcpy(image.data(), buffer, length);
    std::free(buffer);
    return image;
}

} // namespace ribkit::mem
