// Golden vectors: messages written out by hand in all their forms. See golden/README.txt for the text format.
#pragma once

#include "codec/witness/transfer.h"

#include <optional>
#include <string>
#include <vector>

namespace ribkit::witness {

struct golden {
    /// A byte, or `kept`: carried by nobody.
    using cell = int16_t;
    static constexpr cell kept = -1;

    std::string message; ///< named as in naive.h
    std::string title;
    bool hton = false, ntoh = false;
    bool apart = true, in_place = true;
    std::optional<uint32_t> returns;
    std::vector<cell> little, network, big;

    [[nodiscard]] bool goes(direction way) const { return way == direction::hton ? hton : ntoh; }
    /// The bytes to convert; those that nobody carries are 0x5c.
    [[nodiscard]] std::vector<uint8_t> source(direction way, order host) const;
    /// Writes the bytes that have to come out over a destination as it was before.
    void expect(direction way, order host, std::span<uint8_t> destination) const;

  private:
    [[nodiscard]] const std::vector<cell> &host_form(order host) const { return host == order::little ? little : big; }
};

/// All vectors of a file, or of every .txt file in a folder but README.txt. @throws std::runtime_error naming file and
/// line
std::vector<golden> load_goldens(const std::string &path);

} // namespace ribkit::witness
