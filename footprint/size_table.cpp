// Writes docs/size.md: what each part of the library takes on the switch, built for size and for speed.
#include "footprint/measured.h"

#include <array>
#include <cstdio>

namespace ribkit::footprint {
namespace {

constexpr const char *parts[] = {"codec", "diag", "mem", "wrap", "snmp"};

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

void print_deepest(const char *options, const call_graph::path &way) {
    std::printf("\nThe deepest call with `%s`, %u bytes:\n\n| Function | frame |\n| --- | --- |\n", options, way.bytes);
    for (const std::string &step : way.functions) {
        const size_t blank = step.rfind(' ');
        std::printf("| `%s` | %s |\n", step.substr(0, blank).c_str(), step.substr(blank + 1).c_str());
    }
}

void print_row(const char *name, const figures &size, const figures &speed) {
    std::printf("| `%s/` |", name);
    for (const figures &f : {size, speed}) {
        std::printf(" %u | %u | %u | %u |", f.bytes[0], f.bytes[1], f.bytes[2], f.stack);
    }
    std::printf("\n");
}

void print_rest(uint32_t size, uint32_t speed) {
    std::printf("| what the linker adds | | %u | | | | %u | | |\n", size, speed);
}

uint32_t sum(const figures &f) { return f.bytes[0] + f.bytes[1] + f.bytes[2]; }

void print_table(const build &size, const build &speed) {
    std::printf("| Part | -Os: code | tables | data | stack | -O2: code | tables | data | stack |\n");
    std::printf("| --- | --- | --- | --- | --- | --- | --- | --- | --- |\n");
    uint32_t size_rest = size.loaded();
    uint32_t speed_rest = speed.loaded();
    for (const char *part : parts) {
        print_row(part, size.of(part), speed.of(part));
        size_rest -= sum(size.of(part));
        speed_rest -= sum(speed.of(part));
    }
    print_rest(size_rest, speed_rest);
    std::printf("| **loaded, in all** | **%u** | | | | **%u** | | | |\n", size.loaded(), speed.loaded());
}

uint32_t client_bytes(const std::filesystem::path &folder) {
    uint32_t ours = 0;
    for (const piece &p : map_of(folder, "unicast_client").pieces) {
        ours += p.object.find("libcore_for_size_static.a(") != std::string::npos ? p.size : 0;
    }
    return ours;
}

} // namespace
} // namespace ribkit::footprint

int main() {
    using namespace ribkit::footprint;
    const std::filesystem::path folder = RIBKIT_MEASURED_DIR;
    const std::filesystem::path sources = RIBKIT_SOURCE_DIR;
    const build size(folder, sources, "core_for_size");
    const build speed(folder, sources, "core_for_speed");
    print_table(size, speed);
    print_deepest("-Os", size.deepest());
    print_deepest("-O2", speed.deepest());
    std::printf(
        "\nA client that sends unicast routes (`footprint/unicast_client.c`), linked statically: %u bytes of the "
        "library.\n",
        client_bytes(folder));
}
