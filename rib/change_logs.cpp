// A log says what a module would be told: add or delete.
#include "rib/change_logs.h"

#include "rib_codec.h"

namespace ribkit::rib {

namespace {

// As fib_action_to_str has them.
constexpr uint32_t logged_add = 1;
constexpr uint32_t logged_delete = 2;

} // namespace

template <class Kind> void change_logs::enter(const route_event<Kind> &change, uint32_t now) {
    if (change.why == cause::replay) {
        return;
    }
    const uint32_t known = rib_oper_to_fib(change.oper);
    std::get<static_cast<size_t>(Kind::id)>(logs_).add(now, known != 0 ? known : FIB_OPER_UPDATE,
                                                       Kind::is_delete(change.action) ? logged_delete : logged_add,
                                                       change.key);
}

template void change_logs::enter(const route_event<unicast> &, uint32_t);
template void change_logs::enter(const route_event<multicast> &, uint32_t);
template void change_logs::enter(const route_event<label> &, uint32_t);

} // namespace ribkit::rib
