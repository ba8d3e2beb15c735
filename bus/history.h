// Lines of the debug history that tell what a service or a client has done.
#pragma once

#include "base/text.h"

#include <new>
#include <string>

namespace ribkit::bus {

/// Where memory is short there is no line.
void note_in_history(const std::string &line) noexcept;

template <class... Parts> void note_in_history(const char *first, const Parts &...more) noexcept {
    try {
        note_in_history(base::joined(first, more...));
    } catch (const std::bad_alloc &) {
        return;
    }
}

} // namespace ribkit::bus
