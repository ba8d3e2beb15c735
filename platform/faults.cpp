// One script a process, behind a lock; a flag spares the lock where there is none.
#include "platform/faults.h"

#include "platform/clock.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>

namespace ribkit::platform {

namespace {

constexpr size_t largest_script = size_t{1} << 20;

// Asked by every call; the flag spares the lock where there is no script.
struct slot {
    std::atomic<bool> taken{false};
    std::mutex lock;
    std::shared_ptr<fault_script> script;
};

// Never destroyed: threads may still be in a call when the process ends.
slot &in_force() {
    static auto &only = *new slot;
    return only;
}

void replace(std::shared_ptr<fault_script> script) {
    slot &here = in_force();
    const std::scoped_lock lock{here.lock};
    here.taken = script != nullptr;
    here.script.swap(script);
}

/// Why it cannot be read, or an empty text.
std::string read(const char *file, std::string &text) {
    const std::unique_ptr<FILE, int (*)(FILE *)> stream{std::fopen(file, "re"), [](FILE *one) { return fclose(one); }};
    if (stream == nullptr) {
        return std::strerror(errno);
    }
    std::array<char, 4096> piece{};
    while (const size_t size = std::fread(piece.data(), 1, piece.size(), stream.get())) {
        text.append(piece.data(), size);
        if (text.size() > largest_script) {
            return "it is longer than 1 MiB";
        }
    }
    return std::ferror(stream.get()) == 0 ? "" : std::strerror(errno);
}

} // namespace

std::string load_faults(const char *file) {
    std::string text;
    if (const std::string why = read(file, text); !why.empty()) {
        return " cannot be read: " + why;
    }
    auto script = std::make_shared<fault_script>();
    std::string wrong = script->parse(text);
    const uint32_t line = script->virtual_clock_line();
    if (wrong.empty() && !set_virtual_clock(line != 0)) {
        wrong = std::to_string(line) + ": no virtual clock while a handle is open that other processes reach";
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

std::shared_ptr<fault_script> faults() {
    slot &here = in_force();
    if (!here.taken.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    const std::scoped_lock lock{here.lock};
    return here.script;
}

} // namespace ribkit::platform
