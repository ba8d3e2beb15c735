// Members are the words of a route, its ways and its ports.
#include "rib/multicast.h"

namespace ribkit::rib {

static word_route words_of(const multicast::values &what) {
    return {static_cast<uint32_t>(what.members.size()), what.members, what.members};
}

uint32_t multicast::store(hardware &behind, stored &made, const values &what) {
    return made.path.store(behind, words_of(what));
}

uint32_t multicast::replace(hardware &behind, stored &held, const values &what) {
    return held.path.replace(behind, held.path.first_part(), words_of(what));
}

uint32_t multicast::give_back(hardware &behind, stored &held) {
    return held.path.give_back(behind, held.path.first_part());
}

} // namespace ribkit::rib
