// What is different between the tables is how a query is written, and where the next one begins.
#include "clients/table_reader.h"

#include "base/text.h"
#include "clients/question.h"
#include "protocol/queries.h"
#include "protocol/query_kinds.h"
#include "protocol/route_changes.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "rib_trace.h"

namespace ribkit::clients {

namespace {

constexpr uint32_t routes_a_query = 1000;

/// Which of a table's query types asks for what is wanted.
template <class Table> uint32_t chosen(const table_reading<Table> &wanted, uint32_t all, uint32_t vsan, uint32_t key) {
    return wanted.key ? key : wanted.vsan ? vsan : all;
}

/// Where to begin: at the key, or in front of all of the VSAN.
template <class Table> typename Table::key first_key(const table_reading<Table> &wanted) {
    typename Table::key first{};
    first.vsan = wanted.vsan.value_or(0);
    return wanted.key.value_or(first);
}

uint32_t kind_of(const model::label_key &key) {
    return key.type == RIB_ROUTE_SRC_LABEL  ? protocol::label_routes_by_source
           : key.type == RIB_ROUTE_FC_LABEL ? protocol::label_routes_by_fcid
           : key.match_count == 1           ? protocol::label_routes_one_label
                                            : protocol::label_routes_two_labels;
}

/// A walk over a table: the next query, its answer, and where the one after it begins.
template <class Table> class walk;

template <> class walk<unicast_table> {
  public:
    using message = codec::view<wire::fcurt_update>;
    using changes = protocol::unicast_changes;
    static constexpr auto check = rib_check_fcurt_update;
    static constexpr auto print = rib_printf_fcu_query;

    explicit walk(const table_reading<unicast_table> &wanted)
        : type_(wanted.active ? chosen(wanted, 0x4, 0x400, 0x400) : chosen(wanted, 0x1, 0x100, 0x800)),
          from_{first_key(wanted), 0} {}

    [[nodiscard]] auto query(uint32_t uuid) const {
        return protocol::encode(protocol::unicast_query{uuid, type_, routes_a_query, from_.key, from_.owner});
    }
    static model::route_key key_of(message head, const model::unicast_change &one) {
        return {head.get<"vsan">(), one.to};
    }
    /// @return whether the route is not in front of where the query began
    bool pass(uint32_t owner, const model::route_key &key) {
        const protocol::unicast_place place{key, owner};
        const bool in_order = !(place < from_);
        from_ = protocol::place_after(place);
        return in_order;
    }
    [[nodiscard]] const model::route_key &next() const { return from_.key; }

  private:
    uint32_t type_;
    protocol::unicast_place from_;
};

template <> class walk<multicast_table> {
  public:
    using message = codec::view<wire::fcmrt_update>;
    using changes = protocol::multicast_changes;
    static constexpr auto check = rib_check_fcmrt_update;
    static constexpr auto print = rib_printf_fcm_query;

    explicit walk(const table_reading<multicast_table> &wanted)
        : type_(chosen(wanted, 0x1, 0x2, 0x4)), from_(first_key(wanted)) {}

    [[nodiscard]] auto query(uint32_t uuid) const {
        return protocol::encode(protocol::multicast_query{uuid, type_, routes_a_query, from_});
    }
    static model::multicast_key key_of(message head, const model::multicast_change &one) {
        return {head.get<"vsan">(), one.to};
    }
    bool pass(uint32_t /*owner*/, const model::multicast_key &key) {
        const bool in_order = !(key < from_);
        from_ = model::key_after(key);
        return in_order;
    }
    [[nodiscard]] const model::multicast_key &next() const { return from_; }

  private:
    uint32_t type_;
    model::multicast_key from_;
};

template <> class walk<label_table> {
  public:
    using message = codec::view<wire::fclrt_update>;
    using changes = protocol::label_changes;
    static constexpr auto check = rib_check_fclrt_update;
    static constexpr auto print = rib_printf_fcl_query;

    explicit walk(const table_reading<label_table> &wanted)
        : type_(chosen(wanted, 0x10, 0x20, 0x40) | (wanted.key ? kind_of(*wanted.key) : protocol::label_routes_all)),
          from_(first_key(wanted)) {}

    [[nodiscard]] auto query(uint32_t uuid) const {
        return protocol::encode(protocol::label_query{uuid, type_, routes_a_query, from_});
    }
    static model::label_key key_of(message /*head*/, const model::label_change &one) {
        model::label_key key = one.key;
        key.source = key.type == RIB_ROUTE_SRC_LABEL ? key.source : 0;
        return key;
    }
    bool pass(uint32_t /*owner*/, const model::label_key &key) {
        const bool in_order = !(key < from_);
        from_ = model::key_after(key);
        return in_order;
    }
    [[nodiscard]] const model::label_key &next() const { return from_; }

  private:
    uint32_t type_;
    model::label_key from_;
};

/// Whether the walk may still find something.
template <class Table> bool goes_on(const walk<Table> &at, const table_reading<Table> &wanted) {
    if (wanted.key) {
        return at.next().vsan == wanted.key->vsan && !(*wanted.key < at.next());
    }
    return at.next().vsan <= wanted.vsan.value_or(RIB_LAST_VSAN);
}

} // namespace

template <class Table>
void read_table(bus::rib_link &link, const table_reading<Table> &wanted, const route_taker<Table> &take) {
    walk<Table> at(wanted);
    size_t read = 0;
    while (goes_on(at, wanted)) {
        auto query = at.query(wanted.uuid);
        if (wanted.trace) {
            walk<Table>::print(query.data());
        }
        const auto answer = ask_checked(link, Table::query, query, walk<Table>::check);
        const typename walk<Table>::message part(answer.data());
        const uint32_t count = part.template get<"n_route">();
        if (count == 0) {
            return;
        }
        read += count;
        if (read > wanted.most_routes) {
            throw bus::no_answer(base::joined("it has more than ", wanted.most_routes, " routes"));
        }
        for (const auto &one : typename walk<Table>::changes(part)) {
            const auto key = walk<Table>::key_of(part, one);
            const bool is_wanted = !wanted.vsan || key.vsan == *wanted.vsan;
            if (!at.pass(part.template get<"uuid">(), key) || !is_wanted || count > routes_a_query) {
                bus::rib_link::drop_answer(Table::query, answer.size(), "what came is not what was asked for");
            }
            if (!wanted.key || key == *wanted.key) {
                take(part.template get<"uuid">(), key, one.what);
            }
        }
    }
}

template void read_table(bus::rib_link &, const table_reading<unicast_table> &, const route_taker<unicast_table> &);
template void read_table(bus::rib_link &, const table_reading<multicast_table> &, const route_taker<multicast_table> &);
template void read_table(bus::rib_link &, const table_reading<label_table> &, const route_taker<label_table> &);

} // namespace ribkit::clients
