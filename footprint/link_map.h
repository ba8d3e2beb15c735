// What the linker says that it has put where (-Wl,-Map).
#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

namespace ribkit::footprint {

/// A piece of one object.
struct piece {
    std::string section; ///< as the object calls it
    std::string object;  ///< its path; "archive(member)" of one in an archive
    uint32_t size;
};

struct link_map {
    std::vector<piece> pieces; ///< that are loaded
    uint32_t loaded = 0;       ///< all that is loaded, with what the linker has added
};

link_map read_link_map(std::istream &in);

enum class use : uint8_t { code, tables, data };

/// What a section is for.
use use_of(const std::string &section);

} // namespace ribkit::footprint
