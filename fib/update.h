// An update of a table while it is taken: its head first, then each of its paths, then the end. Whole updates are
// refused before anything is changed; what is refused names all of its keys.
#pragma once

#include "fib/state.h"

#include <cstdint>

namespace ribkit::fib {

/// What an operation does with a table.
enum class task : uint8_t {
    none,
    put,
    remove,
    remove_all,
    begin_merge,
    merge,
    end_merge,
    begin_comparison,
    compare,
    end_comparison
};

/// @param oper FIB_OPER_...
task task_of(uint32_t oper);
constexpr bool has_paths(task what) {
    return what == task::put || what == task::remove || what == task::merge || what == task::compare;
}

/// @tparam Kind unicast, multicast or label
template <class Kind> class update_work {
  public:
    using key = typename Kind::key;
    using values = typename Kind::values;

    /// @param paths how many follow
    update_work(state &fib, const model::fib_head &head, uint32_t paths);

    /// Takes a path. Throws std::bad_alloc where there is no memory to name it.
    void take(const key &where, const values &what);
    /// @return the answer. Throws std::bad_alloc where there is no memory for it
    table_answer<Kind> end();

  private:
    [[nodiscard]] uint32_t judge(uint32_t paths) const;
    uint32_t perform();
    uint32_t take_one(const key &where, const values &what);
    uint32_t compare(const key &where, const values &what);
    uint32_t finish_merge();
    uint32_t finish_comparison();
    void keep_difference(const key &where, uint32_t status);
    void forget_differences();

    state &fib_;
    table<Kind> &table_;
    task task_;
    uint32_t refused_ = RIB_OK; ///< why nothing of it takes effect
    table_answer<Kind> answer_;
};

/// Takes a whole update.
/// @param paths a range of anything with `to` or `key`, and `what`
template <class Kind, class Paths>
table_answer<Kind> take_update(state &fib, const model::fib_head &head, const Paths &paths) {
    update_work<Kind> work(fib, head, static_cast<uint32_t>(paths.size()));
    for (const auto &[where, what] : paths) {
        work.take(where, what);
    }
    return work.end();
}

extern template class update_work<unicast>;
extern template class update_work<multicast>;
extern template class update_work<label>;

} // namespace ribkit::fib
