// A path has room for so many ways and labels, and a label entry is found by something.
#include "fib/kinds.h"

namespace ribkit::fib {

static bool fit_paths(std::span<const uint32_t> ways) {
    uint32_t count = 0;
    for (; !ways.empty(); count++) {
        if (ways.size() < 2 || model::pushed_labels(ways[0]) > model::most_path_labels ||
            ways.size() < 2 + model::pushed_labels(ways[0])) {
            return false;
        }
        model::take_label_hop(ways);
    }
    return count <= model::most_paths;
}

bool unicast::is_sound(const key & /*where*/, const values &what) { return fit_paths(what.ways); }

bool label::is_sound(const key &where, const values &what) {
    if (where.match_count > where.match.size() || !fit_paths(what.ways)) {
        return false;
    }
    switch (where.type) {
    case RIB_ROUTE_SRC_LABEL:
        return where.source != 0;
    case RIB_ROUTE_LABEL:
        return where.match_count != 0;
    default:
        return where.type == RIB_ROUTE_FC_LABEL;
    }
}

} // namespace ribkit::fib
