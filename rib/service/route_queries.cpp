// A table is walked from the query's key on. What takes its routes is an answer that grows until it is full.
#include "rib/service/route_queries.h"

#include "protocol/query_kinds.h"
#include "protocol/table_messages.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <optional>

namespace ribkit::rib {

namespace {

using protocol::answer_form;
using protocol::chosen_keys;
using protocol::chosen_routes;
using protocol::query_kind;
using unicast_route = table<unicast>::record;

/// What the messages of a table are, and how a route goes into them.
template <class Kind> struct messages_of;

template <> struct messages_of<unicast> {
    using update = codec::writer<wire::fcurt_update>;
    using info = codec::writer<wire::fcurt_info>;
    static constexpr bool ends_with_hops = true;

    static bool add(const update &to, const unicast::key &key, const unicast::values &what) {
        return protocol::add_route(to, RIB_ACTION_ADD, key.to, what);
    }
    static bool has_hops(const unicast::values &what) { return !what.hops.empty(); }
};

template <> struct messages_of<multicast> {
    using update = codec::writer<wire::fcmrt_update>;
    using info = codec::writer<wire::fcmrt_info>;
    static constexpr bool ends_with_hops = true;

    static bool add(const update &to, const multicast::key &key, const multicast::values &what) {
        return protocol::add_route(to, RIB_ACTION_ADD, key.to, what);
    }
    static bool has_hops(const multicast::values &what) { return !what.members.empty(); }
};

template <> struct messages_of<label> {
    using update = codec::writer<wire::fclrt_update>;
    using info = codec::writer<wire::fclrt_info>;
    static constexpr bool ends_with_hops = false;

    static bool add(const update &to, const label::key &key, const label::values &what) {
        return protocol::add_route(to, label::action_adding(key), key, what);
    }
    static bool has_hops(const label::values &what) { return !what.hops.empty(); }
};

/// Room that is twice as large where an answer's first route needs it: a route has come in one message, so that it
/// leaves in one. @return false where it has grown enough
bool grow(bytes &room) {
    constexpr size_t largest = size_t{64} << 20;
    if (room.size() >= largest) {
        return false;
    }
    room.assign(2 * room.size(), 0);
    return true;
}

/// Whole routes. The first says of which VSAN and client all are.
template <class Kind> class update_answer_of {
    using messages = messages_of<Kind>;

  public:
    /// @param vsan what an answer without routes says
    /// @param wanted how many; of none nothing is taken
    update_answer_of(uint32_t vsan, uint32_t wanted) : bytes_(RIBKIT_ANSWER_LIMIT), left_(wanted) { begin(0, vsan); }

    /// @return whether it takes more
    bool take(const typename Kind::key &key, uint32_t owner, const typename Kind::values &what) {
        const bool is_first = update_->read().template get<"n_route">() == 0;
        if (is_first) {
            begin(owner, key.vsan);
        }
        const auto head = update_->read();
        bool goes_in = head.template get<"vsan">() == key.vsan && head.template get<"uuid">() == owner &&
                       messages::add(*update_, key, what);
        while (is_first && !goes_in && grow(bytes_)) {
            begin(owner, key.vsan);
            goes_in = messages::add(*update_, key, what);
        }
        left_ -= goes_in ? 1 : 0;
        return goes_in && left_ != 0;
    }
    bytes end() {
        bytes_.resize(update_->size());
        return std::move(bytes_);
    }

  private:
    void begin(uint32_t owner, uint32_t vsan) {
        update_.emplace(bytes_).template set<"uuid">(owner).template set<"vsan">(vsan).template set<"oper">(
            RIB_OPER_UPDATE);
    }

    bytes bytes_;
    std::optional<typename messages::update> update_;
    uint32_t left_; ///< never 0 while it takes more
};

/// Entries of the table.
template <class Kind> class info_answer_of {
    using messages = messages_of<Kind>;

  public:
    info_answer_of(uint32_t /*vsan*/, uint32_t wanted)
        : bytes_(RIBKIT_ANSWER_LIMIT), info_(std::in_place, bytes_), left_(wanted) {}

    bool take(const typename Kind::key &key, uint32_t owner, const typename Kind::values &what) {
        const bool stands_alone = messages::ends_with_hops && messages::has_hops(what);
        const bool is_first = info_->read().template get<"n_route">() == 0;
        if (stands_alone && !is_first) {
            return false;
        }
        bool goes_in = protocol::add_entry(*info_, owner, key, what);
        while (is_first && !goes_in && grow(bytes_)) {
            info_.emplace(bytes_);
            goes_in = protocol::add_entry(*info_, owner, key, what);
        }
        if (!goes_in) {
            return false;
        }
        left_--;
        return left_ != 0 && !stands_alone;
    }
    bytes end() {
        bytes_.resize(info_->size());
        return std::move(bytes_);
    }

  private:
    bytes bytes_;
    std::optional<typename messages::info> info_;
    uint32_t left_;
};

/// The answer to a query whose routes `walk` finds: it gives them to the function that it is called with, until that
/// returns false.
template <class Kind, class Walk> reply answer_of(const query_kind &kind, uint32_t vsan, uint32_t wanted, Walk walk) {
    const auto filled = [&](auto answer) {
        if (wanted != 0) {
            walk([&](const auto &...route) { return answer.take(route...); });
        }
        return reply::of(answer.end());
    };
    return kind.form == answer_form::entries ? filled(info_answer_of<Kind>(vsan, wanted))
                                             : filled(update_answer_of<Kind>(vsan, wanted));
}

/// Calls `take` for the routes of a destination from an owner on, by identity. @return whether it takes more
template <class Take>
bool give_candidates(const unicast_route &active, uint32_t from_owner, const chosen_routes chosen, uint32_t asker,
                     Take take) {
    const auto is_meant = [&](const unicast_route &one) {
        return one.of->uuid >= from_owner && (chosen != chosen_routes::mine || one.of->uuid == asker);
    };
    if (active.next == nullptr || chosen == chosen_routes::active) {
        return !is_meant(active) || take(active);
    }
    std::vector<const unicast_route *> meant;
    for (const unicast_route *one = &active; one != nullptr; one = one->next) {
        if (is_meant(*one)) {
            meant.push_back(one);
        }
    }
    std::sort(meant.begin(), meant.end(), [](auto *a, auto *b) { return a->of->uuid < b->of->uuid; });
    return std::all_of(meant.begin(), meant.end(), [&](auto *one) { return take(*one); });
}

/// The destinations of a VSAN that an address is in, the widest first, from a mask on.
std::vector<table<unicast>::index::const_iterator> destinations_of(const table<unicast> &routes,
                                                                   const model::route_key &from) {
    const auto &all = routes.all();
    std::vector<table<unicast>::index::const_iterator> found;
    for (auto at = all.lower_bound({from.vsan, {0, 0}});
         at != all.end() && at->first.vsan == from.vsan && at->first.to.fcid <= from.to.fcid; ++at) {
        const model::destination &to = at->first.to;
        if (to.mask >= from.to.mask && (from.to.fcid & to.mask) == to.fcid) {
            found.push_back(at);
        }
    }
    std::sort(found.begin(), found.end(), [](auto a, auto b) { return a->first.to.mask < b->first.to.mask; });
    return found;
}

/// Whether a walk from a key goes as far as another.
template <class Key> bool reaches(chosen_keys keys, const Key &from, const Key &key) {
    return keys == chosen_keys::all || (keys == chosen_keys::exact ? key == from : key.vsan == from.vsan);
}

/// The topology versions of the first client and VSAN from the query's on; of nobody where there are no more.
reply answer_versions(const state &rib, const protocol::unicast_query &asked) {
    const auto &lists = rib.versions().all();
    const auto found = lists.lower_bound({asked.owner, asked.from.vsan});
    const bool any = found != lists.end() && asked.requested != 0;
    const version_key of = any ? found->first : version_key{0, 0};
    std::span<const uint32_t> versions;
    if (any) {
        versions = std::span(found->second).first(std::min(size_t{asked.requested}, found->second.size()));
    }
    return reply::of(protocol::is_shown(asked.type) ? protocol::topology_versions(of.uuid, of.vsan, versions)
                                                    : protocol::update_of_versions(of.uuid, of.vsan, versions));
}

/// Multicast and label routes, each of one owner; `is_meant` says which.
template <class Kind, class Query, class IsMeant>
reply answer_owned(const state &rib, const Query &asked, const query_kind &kind, IsMeant is_meant) {
    const table<Kind> &routes = rib.routes<Kind>();
    return answer_of<Kind>(kind, asked.from.vsan, asked.requested, [&](auto take) {
        const auto &all = routes.all();
        for (auto at = all.lower_bound(asked.from); at != all.end() && reaches(kind.keys, asked.from, at->first);
             ++at) {
            const auto &[key, route] = *at;
            if (is_meant(key) && !take(key, route->of->uuid, routes.read(*route))) {
                return;
            }
        }
    });
}

bool is_of_kind(uint32_t routes, const model::label_key &key) {
    switch (routes) {
    case protocol::label_routes_by_source:
        return key.type == RIB_ROUTE_SRC_LABEL;
    case protocol::label_routes_one_label:
        return key.type == RIB_ROUTE_LABEL && key.match_count == 1;
    case protocol::label_routes_two_labels:
        return key.type == RIB_ROUTE_LABEL && key.match_count == 2;
    case protocol::label_routes_by_fcid:
        return key.type == RIB_ROUTE_FC_LABEL;
    default:
        return true;
    }
}

} // namespace

reply answer_routes(const state &rib, const protocol::unicast_query &asked, bool in_envelope) {
    const query_kind *kind = protocol::find_kind(protocol::unicast_kinds, asked.type);
    if (const uint32_t result = protocol::refusal_of(kind, in_envelope); result != RIB_OK) {
        return reply::refusal(result);
    }
    if (kind->form == answer_form::versions) {
        return answer_versions(rib, asked);
    }
    const table<unicast> &routes = rib.routes<unicast>();
    return answer_of<unicast>(*kind, asked.from.vsan, asked.requested, [&](auto take) {
        const auto give = [&](const auto &destination, bool is_first) {
            const model::route_key &key = destination.first;
            return give_candidates(*destination.second, is_first ? asked.owner : 0, kind->routes, asked.uuid,
                                   [&](const auto &one) { return take(key, one.of->uuid, routes.read(one)); });
        };
        if (kind->keys == chosen_keys::holding) {
            const auto found = destinations_of(routes, asked.from);
            std::all_of(found.begin(), found.end(),
                        [&](auto at) { return give(*at, at->first.to.mask == asked.from.to.mask); });
            return;
        }
        const auto &all = routes.all();
        auto at = all.lower_bound(asked.from);
        while (at != all.end() && reaches(kind->keys, asked.from, at->first) && give(*at, at->first == asked.from)) {
            ++at;
        }
    });
}

reply answer_routes(const state &rib, const protocol::multicast_query &asked, bool in_envelope) {
    const query_kind *kind = protocol::find_kind(protocol::multicast_kinds, asked.type);
    if (const uint32_t result = protocol::refusal_of(kind, in_envelope); result != RIB_OK) {
        return reply::refusal(result);
    }
    return answer_owned<multicast>(rib, asked, *kind, [](const auto &) { return true; });
}

reply answer_routes(const state &rib, const protocol::label_query &asked, bool in_envelope) {
    const query_kind *kind = protocol::find_label_kind(asked.type);
    if (const uint32_t result = protocol::refusal_of(kind, in_envelope); result != RIB_OK) {
        return reply::refusal(result);
    }
    const uint32_t wanted = asked.type & protocol::label_routes_mask;
    return answer_owned<label>(rib, asked, *kind,
                               [wanted](const model::label_key &key) { return is_of_kind(wanted, key); });
}

} // namespace ribkit::rib
