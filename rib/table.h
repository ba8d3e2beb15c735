// A table of routes of one kind, ordered by key. Where the kind has candidates, each owner has a route of its own for a
// destination, the active one first; the destination has one place in the hardware, and the active route stands there.
// Everything that a route needs is obtained before anything of it counts: it is stored whole or not at all.
#pragma once

#include "rib/hardware/hardware.h"
#include "rib/label.h"
#include "rib/multicast.h"
#include "rib/owners.h"
#include "rib/unicast.h"
#include "rib_mem.h"

#include <cstdint>
#include <map>
#include <memory>

namespace ribkit::rib {

/// For whom and why a table is changed. All of it is of one VSAN.
struct turn {
    uint32_t vsan;
    owner *sender;
    cause why;
    uint32_t oper; ///< RIB_OPER_...
    uint32_t now;  ///< seconds since 1970
    vsan_use *use; ///< null where the VSAN has no routes
};

template <class Kind> class table {
  public:
    using key = typename Kind::key;
    using values = typename Kind::values;

    /// A route. The place says at which destination it is; the active one has a position.
    struct record : placed {
        owner *of;
        record *next; ///< the candidate that would be active without this one; null behind the last
        typename Kind::stored what;

        [[nodiscard]] bool is_active() const { return position != no_position; }
    };
    /// The active route of each destination, which leads to the others.
    using index = std::map<key, record *>;

    /// Throws std::bad_alloc. What is referred to must last.
    /// @param out null, or told what changes
    table(hardware &behind, effects *out);
    table(const table &) = delete;
    table &operator=(const table &) = delete;
    ~table();

    /// Adds the sender's route, or puts it in place of the one that the sender has.
    /// @param marks whether it was named in a merge
    /// @return 0; RIB_OBJECT_OWNED where it is another's and the kind has no candidates; or the code of what is full
    uint32_t put(turn &by, const key &where, const values &what, bool marks);
    /// Removes the sender's route. @return 0; RIB_OBJECT_OWNED where only others have one, RIB_NO_ENTRY where nobody
    /// has
    uint32_t remove(turn &by, const key &where);
    /// Changes flag, metric or both of the sender's unicast route. @return as remove
    uint32_t alter(turn &by, const key &where, uint32_t action, const values &what);
    /// Removes the sender's routes of a multicast group. @return as remove
    uint32_t remove_group(turn &by, const model::destination &group);
    /// Removes the sender's routes of the VSAN. @return how many
    uint32_t remove_all(turn &by);
    /// Removes the sender's routes of the VSAN that are not marked, and all marks. @return how many
    uint32_t remove_unmarked(turn &by);
    /// Tells the sender's routes of the VSAN. @return how many
    uint32_t replay(turn &by);
    /// Puts the candidates of a client into order again once its distance is another one.
    void rank_again(uint32_t uuid, uint32_t now);

    [[nodiscard]] const index &all() const { return index_; }
    /// The route of an owner; null where it has none.
    [[nodiscard]] const record *find(const key &where, uint32_t uuid) const;
    /// What a route says, with its active bit. It refers to what the table has, as long as that stays.
    [[nodiscard]] values read(const record &route) const { return Kind::read(behind_, route.what, route.is_active()); }
    /// Routes, candidates counted.
    [[nodiscard]] uint32_t count() const;
    /// Prints the pool of records.
    void show() const { pool_show(records_.get()); }

  private:
    struct pool_end {
        void operator()(struct pool *ended) const { pool_destroy(ended); }
    };
    using place = typename index::iterator;

    place seek(const key &where);
    record *own(place at, const turn &by) const;
    uint32_t missing(place at) const;
    uint32_t open(turn &by, place hint, const key &where, const values &what, bool marks);
    uint32_t join(turn &by, place at, const values &what, bool marks);
    uint32_t make(turn &by, const key &where, const values &what, record *&made);
    uint32_t replace(turn &by, place at, record &mine, const values &what, bool marks);
    uint32_t remove_at(turn &by, place &at, record &mine);
    template <class Which> uint32_t remove_where(turn &by, Which which);

    void rank(turn &by, place at, record &one, const record *sent, uint32_t action);
    void count(turn &by, uint32_t more);
    void tell(turn &by, const key &where, const record &route, uint32_t action);

    hardware &behind_;
    effects *out_;
    std::unique_ptr<struct pool, pool_end> records_;
    index index_;
    place next_ = index_.end(); ///< of the next route, where it comes in order
    uint32_t rivals_ = 0;       ///< candidates behind the first
};

extern template class table<unicast>;
extern template class table<multicast>;
extern template class table<label>;

} // namespace ribkit::rib
