#include "platform/faults.h"

#include "platform/clock.h"
#include <array>
#include <atomic>
#include <cstdio>
#include <memory>
#include <utility>

namespace ribkit::platform {

namespace {

std::atomic<fault_script *> in_force{nullptr};

void replace(std::unique_ptr<fault_script> script) {
    const std::unique_ptr<fault_script> before{in_force.exchange(script.release())};
}

bool read(const char *file, std::string &text) {
    const std::unique_ptr<FILE, int (*)(FILE *)> stream{std::fopen(file, "re"), [](FILE *one) { return fclose(one); }};
    if (stream == nullptr) {
        return false;
    }
    std::array<char, 4096> piece{};
    while (const size_t size = std::fread(piece.data(), 1, piece.size(), stream.get())) {
        text.append(piece.data(), size);
    }
    return std::ferror(stream.get()) == 0;
}

} // namespace

std::string load_faults(const char *file) {
    std::string text;
    if (!read(file, text)) {
        return " cannot be read";
    }
    auto script = std::make_unique<fault_script>();
    std::string wrong = script->parse(text);
    const uint32_t line = script->virtual_clock_line();
    if (wrong.empty() && !set_virtual_clock(line != 0)) {
        wrong = std::to_string(line) + ": no virtual clock while a handle on a server is open";
    }
    if (wrong.empty()) {
        replace(std::move(script));
    }
    return wrong;
}

void end_faults() {
    set_virtual_clock(false);
    replace(nullptr);
}

fault_script *faults() { return in_force.load(std::memory_order_acquire); }

} // namespace ribkit::platform
