// A block is made whole before anything is taken or given back.
#include "rib/hardware/word_path.h"

#include "rib_codes.h"

#include <algorithm>
#include <cstdlib>

namespace ribkit::rib {

/// The words, behind room for the numbers of the units. @return whether there was memory
bool word_path::write(word_path &made, const word_route &what) {
    const size_t numbers = blocks_of(what.ways);
    const size_t words = numbers + what.first.size() + what.second.size();
    made = {nullptr, what.ways, static_cast<uint32_t>(what.first.size()), static_cast<uint32_t>(what.second.size())};
    if (words == 0) {
        return true;
    }
    made.block = static_cast<uint32_t *>(std::malloc(words * sizeof(uint32_t)));
    if (made.block == nullptr) {
        return false;
    }
    std::copy(what.second.begin(), what.second.end(),
              std::copy(what.first.begin(), what.first.end(), made.block + numbers));
    return true;
}

uint32_t word_path::store(hardware &behind, const word_route &what) {
    word_path made{};
    if (!write(made, what)) {
        return RIB_OUT_OF_MEMORY;
    }
    uint32_t result = behind.paths.reserve(made.units, made.block);
    if (result == RIB_OK) {
        result = behind.ports.add(what.ports);
        if (result != RIB_OK) {
            behind.paths.release(made.units, made.block);
        }
    }
    if (result != RIB_OK) {
        made.forget();
        return result;
    }
    *this = made;
    return RIB_OK;
}

// As many ways as before stay on their units, so that a full space is no reason to refuse them.
uint32_t word_path::replace(hardware &behind, std::span<const uint32_t> ports_before, const word_route &what) {
    word_path made{};
    if (what.ways != units) {
        const uint32_t result = made.store(behind, what);
        if (result == RIB_OK) {
            give_back(behind, ports_before);
            *this = made;
        }
        return result;
    }
    if (!write(made, what)) {
        return RIB_OUT_OF_MEMORY;
    }
    if (const uint32_t result = behind.ports.add(what.ports); result != RIB_OK) {
        made.forget();
        return result;
    }
    std::copy_n(block, blocks_of(units), made.block);
    behind.ports.remove(ports_before);
    forget();
    *this = made;
    return RIB_OK;
}

uint32_t word_path::give_back(hardware &behind, std::span<const uint32_t> ports) {
    behind.ports.remove(ports);
    const uint32_t result = behind.paths.release(units, block);
    forget();
    return result;
}

void word_path::forget() {
    std::free(block);
    *this = {};
}

} // namespace ribkit::rib
