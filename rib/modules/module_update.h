// What is sent to a module, and what it answers, as the follower of the RIB's state has it: no bytes, no bus.
#pragma once

#include "rib/modules/waiting.h"
#include "rib/table.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace ribkit::rib {

/// An update without its paths. All of it is of one VSAN.
struct module_head {
    table_id table;
    uint32_t oper; ///< FIB_OPER_...
    uint32_t vsan; ///< 0: every VSAN, of the begin and the end of a merge
    uint32_t sequence;

    bool operator==(const module_head &) const = default;
};

/// A route for a module, or a destination that has none any more.
/// @tparam Kind unicast, multicast or label
template <class Kind> struct module_path {
    const typename Kind::key &where;
    const typename Kind::values *what;  ///< null: it is removed
    std::span<const uint32_t> labels{}; ///< of a unicast route, for its hops, as take_label_hop has them
};

/// Whether an update holds what was to be added.
enum class added : uint8_t {
    yes,
    no_room, ///< the next update may hold it
    never    ///< no message can say it
};

/// To be derived from by whoever makes messages of updates, or plays a module.
class update_sink {
  public:
    virtual void begin(const module_head &head) = 0;
    virtual added add(const module_path<unicast> &path) = 0;
    virtual added add(const module_path<multicast> &path) = 0;
    virtual added add(const module_path<label> &path) = 0;
    /// Asks for keys that the module has found different, from one on, which has no mask in the multicast table.
    /// Nothing is added to that.
    virtual void ask(const any_key &from, uint32_t sequence) = 0;

  protected:
    ~update_sink() = default;
};

/// What a module has answered, or what has become of an update without an answer.
struct verdict {
    enum class fate : uint8_t {
        answered,
        damaged, ///< something came that is no answer
        given_up ///< it was not answered in time
    };
    fate what = fate::answered;
    uint32_t result = RIB_OK;
    uint32_t accepted = 0;
    /// Those that took no effect; none: with a result that is not RIB_OK, nothing has.
    std::set<any_key> named{};
    /// To a question: keys that differ, and FIB_VERF_..., in the order of the keys.
    std::vector<std::pair<any_key, uint32_t>> found{};
};

/// A destination as an answer names it. Answers do not tell masks of multicast destinations.
inline any_key named(const unicast & /*kind*/, const model::route_key &key) {
    return {unicast::id, {.vsan = key.vsan, .to = key.to}};
}
inline any_key named(const multicast & /*kind*/, const model::multicast_key &key) {
    return {multicast::id, {.vsan = key.vsan, .to = {key.to.fcid, 0}}};
}
inline any_key named(const label & /*kind*/, const model::label_key &key) { return {label::id, key}; }

/// The next destination behind one that an answer names.
inline model::route_key key_behind(const unicast & /*kind*/, const any_key &last) {
    return model::key_after({last.second.vsan, last.second.to});
}
inline model::multicast_key key_behind(const multicast & /*kind*/, const any_key &last) {
    return model::key_after({last.second.vsan, {last.second.to.fcid, UINT32_MAX}});
}
inline model::label_key key_behind(const label & /*kind*/, const any_key &last) {
    return model::key_after(last.second);
}

/// A destination as a request counts it.
inline any_key counted(const unicast &kind, const model::route_key &key) { return named(kind, key); }
inline any_key counted(const multicast & /*kind*/, const model::multicast_key &key) {
    return {multicast::id, {.vsan = key.vsan, .to = key.to}};
}
inline any_key counted(const label &kind, const model::label_key &key) { return named(kind, key); }

} // namespace ribkit::rib
