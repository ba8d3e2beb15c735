// The vocabularies a second time, typed by hand and looked up in another way: what the tests believe.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ribkit::diag {

enum class number : uint8_t { none, hex, hex3, decimal };

struct expected_texts {
    std::string name;
    std::map<uint32_t, std::string> rows;
    std::string before = {};   ///< of an unknown value
    number form = number::hex; ///< of an unknown value
    std::string after = "h??"; ///< of an unknown value

    /// The text of any value.
    [[nodiscard]] std::string of(uint32_t value) const;
};

const std::vector<expected_texts> &all_expected_texts();
const expected_texts &expected(const std::string &name);

std::string digits(uint64_t value, unsigned base, size_t width = 1, char fill = '0');

} // namespace ribkit::diag
