// Sources and hops are the words of a route; both are its ports.
#include "rib/label.h"

#include "rib_codes.h"

#include <algorithm>
#include <array>

namespace ribkit::rib {

namespace {

/// The interfaces that a label route uses: those that frames come in at, and those that they leave through.
class label_ports {
  public:
    explicit label_ports(const label::values &what) {
        std::copy(what.sources.begin(), what.sources.end(), all_.begin());
        count_ = what.sources.size();
        for (auto left = what.hops; !left.empty();) {
            all_[count_++] = model::take_label_hop(left)[1];
        }
    }
    [[nodiscard]] std::span<const uint32_t> all() const { return std::span(all_).first(count_); }

  private:
    std::array<uint32_t, model::most_sources + unit_block> all_;
    size_t count_ = 0;
};

bool is_too_wide(const label::values &what) {
    return what.sources.size() > model::most_sources || model::count_label_hops(what.hops) > unit_block;
}

word_route words_of(const label::values &what, const label_ports &ports) {
    return {model::count_label_hops(what.hops), ports.all(), what.sources, what.hops};
}

} // namespace

label::key label::key_of(uint32_t /*vsan*/, const change &one) {
    key where = one.key;
    where.source = where.type == RIB_ROUTE_SRC_LABEL ? where.source : 0;
    where.to = where.type == RIB_ROUTE_FC_LABEL ? where.to : model::destination{0, 0};
    for (size_t unused = where.match_count; unused < where.match.size(); unused++) {
        where.match[unused] = 0;
    }
    return where;
}

bool label::is_sound(uint32_t vsan, const key &where) {
    if (where.vsan != vsan || where.match_count > where.match.size()) {
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

bool label::is_known(uint32_t action, const key &where) {
    const uint32_t adds = action_adding(where);
    return action == RIB_ACTION_ADD || action == RIB_ACTION_DELETE || action == adds || action == adds << 1;
}

uint32_t label::action_adding(const key &where) {
    if (where.type == RIB_ROUTE_FC_LABEL) {
        return where.match_count == 0 ? RIB_ACTION_ADD_UCAST_LABEL : RIB_ACTION_ADD_FC_LABEL;
    }
    return where.match_count == 0 ? RIB_ACTION_ADD_LABEL_TUNNEL : RIB_ACTION_ADD_LABEL;
}

uint32_t label::store(hardware &behind, stored &made, const values &what) {
    return is_too_wide(what) ? RIB_BAD_PARAMETERS : made.path.store(behind, words_of(what, label_ports(what)));
}

uint32_t label::replace(hardware &behind, stored &held, const values &what) {
    if (is_too_wide(what)) {
        return RIB_BAD_PARAMETERS;
    }
    const label_ports before(read(behind, held, true));
    return held.path.replace(behind, before.all(), words_of(what, label_ports(what)));
}

uint32_t label::give_back(hardware &behind, stored &held) {
    return held.path.give_back(behind, label_ports(read(behind, held, true)).all());
}

} // namespace ribkit::rib
