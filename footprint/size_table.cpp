// Writes the figures of docs/size.md: what each part of the library takes on the switch, built for size and for speed.
#include "footprint/parts.h"

#include <cstdio>

namespace ribkit::footprint {
namespace {

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
