// Reads the linker's map: from its heading on, a section of the output at the start of a line, and indented by one
// blank the pieces that it is made of. A long name has a line of its own.
#include "footprint/link_map.h"

#include <sstream>

namespace ribkit::footprint {
namespace {

struct line {
    bool is_output;
    std::string name;
    uint32_t address, size;
    std::string object;
};

bool begins(const std::string &text, const char *with) { return text.rfind(with, 0) == 0; }

/// The next line of the map with an address and a size.
bool read_line(std::istream &in, line &found) {
    for (std::string text; std::getline(in, text);) {
        if (!begins(text, ".") && !begins(text, " .") && !begins(text, " COMMON")) {
            continue;
        }
        std::string more;
        if (text.find(" 0x") == std::string::npos && std::getline(in, more)) {
            text += more;
        }
        std::istringstream words(text);
        std::string address, size;
        if (words >> found.name >> address >> size && begins(address, "0x") && begins(size, "0x")) {
            found.is_output = text[0] == '.';
            found.address = static_cast<uint32_t>(std::stoul(address, nullptr, 16));
            found.size = static_cast<uint32_t>(std::stoul(size, nullptr, 16));
            std::getline(words >> std::ws, found.object);
            return true;
        }
    }
    return false;
}

} // namespace

link_map read_link_map(std::istream &in) {
    for (std::string text; std::getline(in, text) && !begins(text, "Linker script and memory map");) {
    }
    link_map map;
    bool is_loaded = false;
    for (line next; read_line(in, next);) {
        if (next.is_output) {
            is_loaded = next.address != 0;
            map.loaded += is_loaded ? next.size : 0;
        } else if (is_loaded && next.size != 0) {
            map.pieces.push_back({next.name, next.object, next.size});
        }
    }
    return map;
}

use use_of(const std::string &section) {
    if (begins(section, ".text")) {
        return use::code;
    }
    const bool is_constant =
        begins(section, ".rodata") || begins(section, ".data.rel.ro") || begins(section, ".eh_frame");
    return is_constant ? use::tables : use::data;
}

} // namespace ribkit::footprint
