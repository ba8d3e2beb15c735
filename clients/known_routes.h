// What a client knows of its own routes in the RIB: what the RIB has accepted, what may or may not have taken effect
// since, and of which VSANs only the RIB can tell.
#pragma once

#include "clients/client_traffic.h"
#include "clients/table_update.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace ribkit::clients {

/// A VSAN's table as a client holds it. Several VSANs may share one, and nobody changes it.
template <class Table> using own_table = std::map<typename Table::key_in_vsan, typename Table::route>;
template <class Table> using shared_table = std::shared_ptr<const own_table<Table>>;

template <class Routes> inline const Routes no_routes{};

template <class Routes> const Routes &table_of(const std::shared_ptr<const Routes> &routes) {
    return routes == nullptr ? no_routes<Routes> : *routes;
}

/// What makes one table of another.
template <class Table> struct table_difference {
    shared_table<Table> before, after;
    std::vector<change_of<Table>> changes;
};
template <class Table> using shared_difference = std::shared_ptr<const table_difference<Table>>;

template <class Table> class known_routes {
  public:
    /// The RIB may hold routes of this client that it knows nothing of.
    void forget() { *this = {}; }

    /// Whether it was ever known what the RIB has.
    [[nodiscard]] bool has(uint32_t vsan) const { return accepted_.contains(vsan); }
    [[nodiscard]] bool is_sure(uint32_t vsan) const { return !unsure_.contains(vsan); }
    /// What the RIB has, where that is sure.
    [[nodiscard]] const own_table<Table> &of(uint32_t vsan) { return table_of(accepted_[vsan]); }

    /// Only the RIB can tell.
    void doubt(uint32_t vsan) { unsure_.insert(vsan); }
    void doubt_all() {
        for (const auto &[vsan, routes] : accepted_) {
            unsure_.insert(vsan);
        }
    }

    /// That is what the RIB has.
    void accept(uint32_t vsan, shared_table<Table> routes) {
        accepted_[vsan] = std::move(routes);
        unsure_.erase(vsan);
    }

    /// Of these changes it is not known which the RIB has made.
    /// @param made so many, at most
    void leave_open(uint32_t vsan, std::span<const change_of<Table>> changes, size_t made) {
        open_[vsan].push_back({{changes.begin(), changes.end()}, made});
    }

    /// The RIB has told what it has. Changes that were left open and have taken effect are counted.
    void learn(uint32_t vsan, own_table<Table> routes, client_traffic &traffic) {
        if (auto open = open_.extract(vsan)) {
            for (auto &[changes, made] : open.mapped()) {
                traffic.count(of(vsan), effective(std::move(changes), routes, made));
            }
        }
        accept(vsan, std::make_shared<const own_table<Table>>(std::move(routes)));
    }

    /// What is to be changed. Many VSANs in turn ask for the same.
    shared_difference<Table> difference_to(uint32_t vsan, const shared_table<Table> &wanted) {
        const shared_table<Table> &before = accepted_[vsan];
        if (last_ == nullptr || last_->after != wanted || last_->before != before) {
            auto changes =
                before == wanted ? std::vector<change_of<Table>>() : model::changes_between(table_of(before), *wanted);
            last_ = std::make_shared<const table_difference<Table>>(
                table_difference<Table>{before, wanted, std::move(changes)});
        }
        return last_;
    }

  private:
    /// Changes of which it is not known yet which of them the RIB has made.
    struct open_changes {
        std::vector<change_of<Table>> changes;
        size_t made; ///< at most
    };

    std::map<uint32_t, shared_table<Table>> accepted_;   ///< by VSAN; null is empty
    std::map<uint32_t, std::vector<open_changes>> open_; ///< by VSAN, since `accepted_`
    std::set<uint32_t> unsure_;                          ///< VSANs of which it is not known what the RIB has
    shared_difference<Table> last_;
};

} // namespace ribkit::clients
