// Reading scripts, and looking for the one that counts.
#include "platform/faults/faults.h"

#include "platform/clock.h"
#include "platform/lasting.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>

namespace ribkit::platform {

namespace {

constexpr size_t largest_script = size_t{1} << 20;

constinit lasting<fault_slot> common;

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

/// The file's script, or what is wrong with it.
std::string parsed(const char *file, fault_script &script) {
    std::string text;
    if (const std::string why = read(file, text); !why.empty()) {
        return " cannot be read: " + why;
    }
    return script.parse(text);
}

} // namespace

void fault_slot::put(fault_script_ptr script) {
    const std::scoped_lock lock{lock_};
    taken_ = script != nullptr;
    script_.swap(script);
}

fault_script_ptr fault_slot::get() const {
    if (!taken_.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    const std::scoped_lock lock{lock_};
    return script_;
}

void handle_faults::put(fault_script_ptr own) {
    own_.put(std::move(own));
    is_own_ = true;
}

fault_script_ptr handle_faults::get() const { return is_own_ ? own_.get() : common_faults(); }

std::string load_faults(const char *file) {
    auto script = std::make_shared<fault_script>();
    std::string wrong = parsed(file, *script);
    const uint32_t line = script->virtual_clock_line();
    if (wrong.empty() && !set_virtual_clock(line != 0)) {
        wrong = std::to_string(line) + ": no virtual clock while a handle is open that other processes reach";
    }
    if (wrong.empty()) {
        common.it.put(std::move(script));
    }
    return wrong;
}

void end_faults() {
    set_virtual_clock(false);
    common.it.put(nullptr);
}

fault_script_ptr common_faults() { return common.it.get(); }

std::string load_faults(const char *file, handle_faults &handle) {
    auto script = std::make_shared<fault_script>();
    std::string wrong = parsed(file, *script);
    if (wrong.empty() && script->virtual_clock_line() != 0) {
        wrong = std::to_string(script->virtual_clock_line()) + ": the clock is the process's, not a handle's";
    }
    if (wrong.empty()) {
        handle.put(std::move(script));
    }
    return wrong;
}

} // namespace ribkit::platform
