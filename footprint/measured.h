// The figures of one build of the library: what its objects and the linker's map say, in its folder of the build.
#pragma once

#include "footprint/call_graph.h"
#include "footprint/link_map.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace ribkit::footprint {

inline constexpr uint32_t checks_nest = 3; // how deep the walk of a check calls itself

inline std::ifstream opened(const std::filesystem::path &path) {
    std::ifstream in(path);
    if (!in) {
        throw std::runtime_error(path.string() + ": cannot be read");
    }
    return in;
}

/// The map of a library or program.
inline link_map map_of(const std::filesystem::path &folder, const std::string &name) {
    std::ifstream in = opened(folder / (name + ".map"));
    return read_link_map(in);
}

/// The calls of all objects of a library.
inline call_graph calls_of(const std::filesystem::path &folder, const std::string &name) {
    call_graph graph;
    for (const auto &file :
         std::filesystem::recursive_directory_iterator(folder / "CMakeFiles" / (name + "_objects.dir"))) {
        if (file.path().extension() == ".ci") {
            std::ifstream in = opened(file.path());
            graph.add(in);
        }
    }
    return graph;
}

/// The names that the library exports.
inline std::vector<std::string> exported_names(const std::filesystem::path &sources) {
    std::vector<std::string> names;
    std::ifstream in = opened(sources / "exports.txt");
    for (std::string name; std::getline(in, name);) {
        if (!name.empty() && name[0] != '#') {
            names.push_back(name);
        }
    }
    return names;
}

} // namespace ribkit::footprint
