// Each record is judged before the first takes effect; operations without records do their work at the end.
#include "rib/operation.h"

#include "rib/state.h"
#include "rib_codes.h"

#include <new>

namespace ribkit::rib {

namespace {

constexpr bool takes_records(task what) {
    return what == task::change || what == task::restore || what == task::merge || what == task::remove;
}

/// Whether the sender's routes are what it is about.
constexpr bool is_of_routes(task what) {
    return takes_records(what) || what == task::remove_all || what == task::replay;
}

constexpr bool is_of_versions(task what) { return what == task::add_version || what == task::delete_version; }

constexpr cause cause_of(task what) {
    return what == task::restore ? cause::restore : what == task::replay ? cause::replay : cause::change;
}

} // namespace

task task_of(uint32_t oper) {
    switch (oper) {
    case RIB_OPER_UPDATE:
    case RIB_OPER_UPDATE_RSP:
    case RIB_OPER_UPDATE_CMI:
        return task::change;
    case RIB_OPER_REMOVE:
    case RIB_OPER_REMOVE_RSP:
        return task::remove;
    case RIB_OPER_REMOVE_ALL:
    case RIB_OPER_REMOVE_ALL_RSP:
        return task::remove_all;
    case RIB_OPER_MERGE:
    case RIB_OPER_MERGE_RSP:
        return task::merge;
    case RIB_OPER_ADD_VERSION:
        return task::add_version;
    case RIB_OPER_DELETE_VERSION:
        return task::delete_version;
    case RIB_OPER_RESTORE:
        return task::restore;
    case RIB_OPER_SUSPEND:
        return task::suspend;
    case RIB_OPER_RESUME:
        return task::resume;
    case RIB_OPER_REPLAY:
        return task::replay;
    case RIB_OPER_VERIFY:
        return task::verify;
    default:
        return task::none;
    }
}

template <class Kind>
update_work<Kind>::update_work(state &on, const update_head &head)
    : on_(on), head_(head), table_(on.table_of<Kind>()),
      task_(task_of(head.oper)), turn_{head.vsan, nullptr, cause_of(task_), head.oper, head.now, nullptr},
      answer_{judge_head(), head.oper, head.vsan} {}

template <class Kind> uint32_t update_work<Kind>::judge_head() const {
    if (task_ == task::none || (is_of_versions(task_) && Kind::id != table_id::unicast)) {
        return RIB_NOT_SUPPORTED;
    }
    const bool is_sound = head_.vsan >= 1 && head_.vsan <= RIB_LAST_VSAN && head_.versions.size() <= most_versions &&
                          (head_.oper != RIB_OPER_UPDATE_CMI || head_.in_envelope);
    if (!is_sound) {
        return RIB_BAD_PARAMETERS;
    }
    const bool is_states = task_ == task::suspend || task_ == task::resume;
    return is_states && head_.uuid != RIB_CLIENT_VSAN_MANAGER ? RIB_OBJECT_OWNED : RIB_OK;
}

template <class Kind> void update_work<Kind>::judge(const typename Kind::change &one) {
    records_++;
    if (answer_.result != RIB_OK) {
        return;
    }
    const auto where = Kind::key_of(head_.vsan, one);
    bool is_sound = takes_records(task_) && Kind::is_sound(head_.vsan, where);
    if (is_sound && task_ != task::remove) {
        is_sound = Kind::is_known(one.action, where) && (task_ != task::merge || Kind::is_add(one.action));
    }
    answer_.result = is_sound ? RIB_OK : RIB_BAD_PARAMETERS;
}

template <class Kind> bool update_work<Kind>::begins() {
    if (answer_.result == RIB_OK && is_of_routes(task_)) {
        turn_.sender = on_.owners_.enter(head_.uuid);
        turn_.use = on_.hardware_.find(head_.vsan);
        answer_.result = turn_.sender == nullptr ? RIB_OUT_OF_MEMORY : RIB_OK;
    }
    begun_ = answer_.result == RIB_OK;
    return begun_;
}

template <class Kind> void update_work<Kind>::take(const typename Kind::change &one) {
    const auto where = Kind::key_of(head_.vsan, one);
    uint32_t result = RIB_OK;
    if (task_ == task::remove || Kind::is_delete(one.action)) {
        result = table_.remove(turn_, where);
    } else if (Kind::is_add(one.action)) {
        result = table_.put(turn_, where, one.what, task_ == task::merge);
    } else if (one.action == RIB_ACTION_DELETE_GROUP) {
        result = table_.remove_group(turn_, Kind::destination_of(where));
    } else {
        result = table_.alter(turn_, where, one.action, one.what);
    }
    answer_.accepted += result == RIB_OK ? 1 : 0;
    answer_.result = answer_.result == RIB_OK ? result : answer_.result;
}

template <class Kind> update_answer update_work<Kind>::end() {
    if (begun_ && records_ == 0) {
        answer_.result = finish();
    }
    if (turn_.sender != nullptr) {
        on_.owners_.leave(head_.uuid);
        on_.hardware_.leave(head_.vsan);
    }
    answer_.held = on_.held(Kind::id, head_.vsan);
    return answer_;
}

/// What an operation does that names no routes.
template <class Kind> uint32_t update_work<Kind>::finish() {
    const version_key versions{head_.uuid, head_.vsan};
    switch (task_) {
    case task::merge:
        answer_.accepted = table_.remove_unmarked(turn_);
        return RIB_OK;
    case task::remove_all:
        answer_.accepted = table_.remove_all(turn_);
        return RIB_OK;
    case task::replay:
        answer_.accepted = table_.replay(turn_);
        return RIB_OK;
    case task::add_version: {
        const uint32_t result = on_.versions_.add(versions, head_.versions);
        answer_.accepted = result == RIB_OK ? static_cast<uint32_t>(head_.versions.size()) : 0;
        return result;
    }
    case task::delete_version:
        return on_.versions_.remove(versions, answer_.accepted);
    case task::suspend:
    case task::resume:
        return on_.set_suspended(head_.vsan, task_ == task::suspend);
    case task::verify:
        if (on_.out_ != nullptr) {
            on_.out_->compare(Kind::id, head_.vsan);
        }
        return RIB_OK;
    default:
        return RIB_OK;
    }
}

template class update_work<unicast>;
template class update_work<multicast>;
template class update_work<label>;

} // namespace ribkit::rib
