// Lines of the debug history that tell what the RIB has done.
#pragma once

#include "base/text.h"

#include <new>
#include <string>

namespace ribkit::rib {

/// Where memory is short there is no line.
void note_in_history(const std::string &line) noexcept;

template <class... Parts> void note_in_history(const char *first, const Parts &...more) noexcept {
    try {
        note_in_history(base::joined(first, more...));
    } catch (const std::bad_alloc &) {
        return;
    }
}

} // namespace ribkit::rib
