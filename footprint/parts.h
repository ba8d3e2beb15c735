// One build of the library by parts: what docs/size.md has a row of.
#pragma once

#include "footprint/measured.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>

namespace ribkit::footprint {

inline constexpr const char *parts[] = {"codec", "diag", "mem", "wrap", "snmp"};

struct figures {
    std::array<uint32_t, 3> bytes{}; // by use
    uint32_t stack = 0;

    void add(const piece &p) { bytes[static_cast<size_t>(use_of(p.section))] += p.size; }
};

/// One build of the library, by parts.
class build {
  public:
    build(const std::filesystem::path &folder, const std::filesystem::path &sources, const std::string &name)
        : map_(map_of(folder, name)), graph_(calls_of(folder, name)) {
        std::ifstream in = opened(sources / "footprint/indirect_calls.txt");
        graph_.resolve(read_indirect_calls(in));
        graph_.nesting = checks_nest;
        for (const std::string &function : exported_names(sources)) {
            const call_graph::path way = graph_.deepest(function, recursive_);
            stacks_[function] = way.bytes;
            deepest_ = way.bytes > deepest_.bytes ? way : deepest_;
        }
    }

    [[nodiscard]] figures of(const std::string &part) const {
        figures f;
        for (const piece &p : map_.pieces) {
            if (p.object.find("/" + part + "/") == std::string::npos) {
                continue;
            }
            f.add(p);
            const size_t dot = p.section.rfind('.');
            if (const auto stack = stacks_.find(p.section.substr(dot + 1)); stack != stacks_.end()) {
                f.stack = std::max(f.stack, stack->second);
            }
        }
        return f;
    }

    [[nodiscard]] const call_graph::path &deepest() const { return deepest_; }
    [[nodiscard]] uint32_t loaded() const { return map_.loaded; }

  private:
    link_map map_;
    call_graph graph_;
    std::set<std::string> recursive_;
    std::map<std::string, uint32_t> stacks_;
    call_graph::path deepest_;
};

/// What a client of unicast routes, linked statically, takes of the library.
inline uint32_t client_bytes(const std::filesystem::path &folder) {
    uint32_t ours = 0;
    for (const piece &p : map_of(folder, "unicast_client").pieces) {
        ours += p.object.find("libcore_for_size_static.a(") != std::string::npos ? p.size : 0;
    }
    return ours;
}

} // namespace ribkit::footprint
