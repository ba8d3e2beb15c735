// What an update does, record by record, and at its end.
#pragma once

#include "rib/table.h"
#include "rib_codes.h"

#include <cstdint>

namespace ribkit::rib {

class state;

/// What an operation asks for: those with response, or by envelope, ask for the same.
enum class task : uint8_t {
    none, ///< there is no such operation
    change,
    restore,
    merge,
    remove,
    remove_all,
    suspend,
    resume,
    replay,
    verify,
    add_version,
    delete_version
};

task task_of(uint32_t oper);

/// Whether the answer to an operation waits for the modules.
constexpr bool waits_for_modules(uint32_t oper) {
    return oper == RIB_OPER_UPDATE_RSP || oper == RIB_OPER_REMOVE_RSP || oper == RIB_OPER_REMOVE_ALL_RSP ||
           oper == RIB_OPER_MERGE_RSP || oper == RIB_OPER_VERIFY;
}

/// An update while it is taken: judge() for each record, then, if it begins, take() for each, then end().
template <class Kind> class update_work {
  public:
    update_work(state &on, const update_head &head);

    void judge(const typename Kind::change &one);
    /// Whether all makes sense, and there is memory to begin.
    bool begins();
    void take(const typename Kind::change &one);
    update_answer end();

  private:
    [[nodiscard]] uint32_t judge_head() const;
    uint32_t finish();

    state &on_;
    const update_head &head_;
    table<Kind> &table_;
    task task_;
    turn turn_;
    uint32_t records_ = 0;
    bool begun_ = false;
    update_answer answer_;
};

extern template class update_work<unicast>;
extern template class update_work<multicast>;
extern template class update_work<label>;

} // namespace ribkit::rib
