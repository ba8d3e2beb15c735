// A module as plain as it can be: tables as maps of numbers, a bound for each, and updates taken in the order of their
// sequence. What follows the RIB's state is tried on it.
#pragma once

#include "rib/modules/module_update.h"
#include "rib/naive/naive_request.h"

#include <map>
#include <optional>
#include <set>
#include <vector>

namespace ribkit::rib {

struct played_path {
    any_key where; ///< with its mask
    words what;    ///< empty: it is removed
};

struct played_update {
    module_head head{};
    std::vector<played_path> paths{};
    std::optional<any_key> asks{}; ///< from where on it asks for differences
};

/// A route as the module keeps it.
words words_of(const module_path<unicast> &path);
words words_of(const module_path<multicast> &path);
words words_of(const module_path<label> &path);

/// Writes down what is said.
class played_sink final : public update_sink {
  public:
    explicit played_sink(size_t most_paths) : most_(most_paths) {}

    void begin(const module_head &head) override { now = {head, {}, {}}; }
    void ask(const any_key &from, uint32_t sequence) override { now = {{from.first, 0, 0, sequence}, {}, from}; }
    added add(const module_path<unicast> &path) override { return keep(counted(unicast(), path.where), path); }
    added add(const module_path<multicast> &path) override { return keep(counted(multicast(), path.where), path); }
    added add(const module_path<label> &path) override { return keep(counted(label(), path.where), path); }

    played_update now;

  private:
    template <class Path> added keep(const any_key &where, const Path &path) {
        if (now.paths.size() == most_) {
            return added::no_room;
        }
        now.paths.push_back({where, path.what == nullptr ? words{} : words_of(path)});
        return added::yes;
    }

    size_t most_;
};

class played_module {
  public:
    using entries = std::map<any_key, words>;

    explicit played_module(size_t room) : room_(room) {}

    /// Takes an update, and answers.
    verdict take(const played_update &update);
    /// All tables are empty.
    void restart();

    [[nodiscard]] const entries &all() const { return all_; }
    /// To be changed without the RIB's knowledge.
    [[nodiscard]] entries &behind_the_back() { return all_; }
    [[nodiscard]] uint32_t sequence() const { return last_; }

  private:
    using vsan_by_table = std::map<table_id, uint32_t>;

    void merge(const module_head &head, verdict &said);
    void compare(const played_update &update, verdict &said);
    void find_extra(const module_head &head);
    [[nodiscard]] verdict tell_differences(const any_key &from) const;
    [[nodiscard]] static bool is_in(const vsan_by_table &those, const module_head &head);
    uint32_t remove(table_id table, uint32_t vsan, bool unnamed_only);

    size_t room_; ///< of each table
    uint32_t last_ = 0;
    entries all_;
    std::set<any_key> named_;
    vsan_by_table merging_; ///< the VSAN of each that is merged
    std::set<any_key> compared_;
    vsan_by_table comparing_;                 ///< ... that is compared
    std::map<any_key, uint32_t> differences_; ///< as they are named
};

} // namespace ribkit::rib
