// The vocabulary of operations and actions, written out.
#include "rib/naive/naive_request.h"

#include "rib_codes.h"

#include <algorithm>
#include <initializer_list>

namespace ribkit::rib {

namespace {

constexpr uint32_t most_labels = 2, most_versions = 240;

bool is_one_of(uint32_t oper, std::initializer_list<uint32_t> all) {
    return std::find(all.begin(), all.end(), oper) != all.end();
}

/// The actions that add a label route: for any, and for one of its type and labels.
bool may_add_label(uint32_t action, const words &key) {
    const uint32_t type = key[1];
    const bool labels = key[5] != 0;
    switch (action) {
    case RIB_ACTION_ADD:
        return true;
    case RIB_ACTION_ADD_LABEL:
        return type == RIB_ROUTE_LABEL || (type == RIB_ROUTE_SRC_LABEL && labels);
    case RIB_ACTION_ADD_LABEL_TUNNEL:
        return type == RIB_ROUTE_SRC_LABEL && !labels;
    case RIB_ACTION_ADD_FC_LABEL:
        return type == RIB_ROUTE_FC_LABEL && labels;
    case RIB_ACTION_ADD_UCAST_LABEL:
        return type == RIB_ROUTE_FC_LABEL && !labels;
    default:
        return false;
    }
}

/// Whether the action means something for the table and the key; of a route to remove only the key counts.
bool is_known(const naive_request &asked, const naive_record &record) {
    return removes(asked.oper) || adds(asked.table, record) || deletes(asked.table, record) ||
           changes(asked.table, record) || is_group(asked.table, record);
}

bool is_label_key(uint32_t vsan, const words &key) {
    const uint32_t type = key[1];
    return key[0] == vsan && key[5] <= most_labels &&
           (type == RIB_ROUTE_SRC_LABEL || type == RIB_ROUTE_LABEL || type == RIB_ROUTE_FC_LABEL);
}

bool makes_sense(const naive_request &asked, const naive_record &record) {
    return is_known(asked, record) && (asked.table != naive_label || is_label_key(asked.vsan, record.key)) &&
           (!merges(asked.oper) || adds(asked.table, record));
}

} // namespace

uint32_t adding(size_t table, const words &key) {
    for (const uint32_t action :
         {RIB_ACTION_ADD_LABEL, RIB_ACTION_ADD_LABEL_TUNNEL, RIB_ACTION_ADD_FC_LABEL, RIB_ACTION_ADD_UCAST_LABEL}) {
        if (table == naive_label && may_add_label(action, key)) {
            return action;
        }
    }
    return RIB_ACTION_ADD;
}

bool adds(size_t table, const naive_record &record) {
    return table == naive_label ? may_add_label(record.action, record.key) : record.action == RIB_ACTION_ADD;
}

bool deletes(size_t table, const naive_record &record) {
    return table == naive_label ? record.action % 2 == 0 && may_add_label(record.action / 2, record.key)
                                : record.action == RIB_ACTION_DELETE;
}

bool changes(size_t table, const naive_record &record) {
    return table == naive_unicast &&
           (record.action == RIB_ACTION_CHANGE_FLAG || record.action == RIB_ACTION_CHANGE_METRIC ||
            record.action == (RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC));
}

bool is_group(size_t table, const naive_record &record) {
    return table == naive_multicast && record.action == RIB_ACTION_DELETE_GROUP;
}

bool updates(uint32_t oper) {
    return is_one_of(oper, {RIB_OPER_UPDATE, RIB_OPER_UPDATE_RSP, RIB_OPER_UPDATE_CMI, RIB_OPER_RESTORE});
}
bool merges(uint32_t oper) { return is_one_of(oper, {RIB_OPER_MERGE, RIB_OPER_MERGE_RSP}); }
bool removes(uint32_t oper) { return is_one_of(oper, {RIB_OPER_REMOVE, RIB_OPER_REMOVE_RSP}); }
bool removes_all(uint32_t oper) { return is_one_of(oper, {RIB_OPER_REMOVE_ALL, RIB_OPER_REMOVE_ALL_RSP}); }
bool is_about_versions(uint32_t oper) { return is_one_of(oper, {RIB_OPER_ADD_VERSION, RIB_OPER_DELETE_VERSION}); }
bool is_about_states(uint32_t oper) { return is_one_of(oper, {RIB_OPER_SUSPEND, RIB_OPER_RESUME}); }

uint32_t judge(const naive_request &asked) {
    if (is_about_versions(asked.oper) && asked.table != naive_unicast) {
        return RIB_NOT_SUPPORTED;
    }
    if (!has_records(asked.oper) && !removes_all(asked.oper) && !is_about_versions(asked.oper) &&
        !is_about_states(asked.oper) && !is_one_of(asked.oper, {RIB_OPER_REPLAY, RIB_OPER_VERIFY})) {
        return RIB_NOT_SUPPORTED;
    }
    if (asked.vsan < 1 || asked.vsan > RIB_LAST_VSAN || asked.versions.size() > most_versions ||
        (asked.oper == RIB_OPER_UPDATE_CMI && !asked.in_envelope)) {
        return RIB_BAD_PARAMETERS;
    }
    if (is_about_states(asked.oper) && asked.uuid != RIB_CLIENT_VSAN_MANAGER) {
        return RIB_OBJECT_OWNED;
    }
    const bool sensible = (has_records(asked.oper) || asked.records.empty()) &&
                          std::all_of(asked.records.begin(), asked.records.end(),
                                      [&](const naive_record &record) { return makes_sense(asked, record); });
    return sensible ? RIB_OK : RIB_BAD_PARAMETERS;
}

} // namespace ribkit::rib
