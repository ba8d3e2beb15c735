// How a row of the catalogue is written. Layout and functions are arguments of templates: what one of them lacks does
// not compile, and functions of many types become those few of codec/message.h.
#pragma once

#include "codec/kernels.h"
#include "codec/message.h"

#include <algorithm>
#include <span>
#include <type_traits>

namespace ribkit::catalogue {

template <auto Convert> uint32_t converted(const void *src, void *dst) {
    if constexpr (std::is_void_v<decltype(Convert(src, dst))>) {
        Convert(src, dst);
        return 0;
    } else {
        return Convert(src, dst);
    }
}

/// A trace of a message, of one that has to be told its size, or of a record that stands in an update.
template <auto Trace> void traced(const void *message, uint32_t size, const void *update) {
    if constexpr (std::is_invocable_v<decltype(Trace), const void *, const void *>) {
        Trace(update, message);
    } else if constexpr (std::is_invocable_v<decltype(Trace), uint32_t, const void *>) {
        Trace(size, message);
    } else {
        Trace(message);
    }
}

/// A display with a header flag, one that clears the flag itself, or one without.
template <auto Display> void shown(uint32_t *header, const void *message) {
    if constexpr (std::is_invocable_v<decltype(Display), uint32_t *, const void *>) {
        Display(header, message);
    } else if constexpr (std::is_invocable_v<decltype(Display), uint32_t, const void *>) {
        Display(*header, message);
        *header = 0;
    } else {
        Display(message);
    }
}

struct row : codec::message {
    template <uint32_t (*Size)(const void *)> [[nodiscard]] consteval row sized() const {
        row with = *this;
        with.size = Size;
        return with;
    }
    /// One of its words decides what stands in it.
    [[nodiscard]] consteval row choosing(const codec::choice &what) const {
        row with = *this;
        with.chosen = {&what, 1};
        return with;
    }
    template <auto Trace> [[nodiscard]] consteval row traced() const {
        row with = *this;
        with.trace = catalogue::traced<Trace>;
        return with;
    }
    template <auto Display> [[nodiscard]] consteval row shown() const {
        row with = *this;
        with.show = catalogue::shown<Display>;
        return with;
    }
};

/// The row of a message. Its layout has to be among all_layouts.
template <const codec::layout &L, auto Send, auto Receive, codec::message::checker Check>
consteval row message_of(std::string_view name, const char *odd = "") {
    return {{.name = name,
             .wire = &L,
             .kernel = codec::all_layouts::index<L>(),
             .to_network = converted<Send>,
             .to_host = converted<Receive>,
             .check = Check,
             .odd = odd}};
}

/// The row of what no converter handles.
template <const codec::layout &L> consteval row form_of(const char *odd = "") {
    return {{.name = L.name, .wire = &L, .odd = odd}};
}

/// Whether every layout that has converters is a message's.
consteval bool has_every_kernel(std::span<const row> rows) {
    std::array<bool, codec::all_layouts::count> found{};
    for (const row &r : rows) {
        found.at(r.kernel) = true;
    }
    return std::all_of(found.begin(), found.end(), [](bool is) { return is; });
}

consteval bool has_no_name_twice(std::span<const row> rows) {
    for (const row &r : rows) {
        if (std::count_if(rows.begin(), rows.end(), [&](const row &other) { return other.name == r.name; }) != 1) {
            return false;
        }
    }
    return true;
}

} // namespace ribkit::catalogue
