// What is asked of the route tables, and what is done to them. Most kinds are single bits; a value of several bits has
// no text unless it has a row.
#pragma once

#include "diag/text/vocabulary.h"
#include "rib_codes.h"

namespace ribkit::diag {

inline constexpr text_row fclrt_type_rows[] = {
    {0x11, "query src-label"},
    {0x12, "query 1-label"},
    {0x14, "query 2-labels"},
    {0x18, "query fc+label"},
    {0x1f, "query all-labels"},
    {0x21, "query vsan src-label"},
    {0x22, "query vsan 1-label"},
    {0x24, "query vsan 2-labels"},
    {0x28, "query vsan fc+label"},
    {0x2f, "query vsan all-labels"},
    {0x41, "query matched src-label"},
    {0x42, "query matched 1-label"},
    {0x44, "query matched 2-labels"},
    {0x48, "query matched fc+label"},
    {0x101, "query src-label vault"},
    {0x102, "query 1-label vault"},
    {0x104, "query 2-labels vault"},
    {0x108, "query fc+label vault"},
    {0x10f, "query all-labels vault"},
    {0x201, "query vsan src-label vault"},
    {0x202, "query vsan 1-label vault"},
    {0x204, "query vsan 2-labels vault"},
    {0x208, "query vsan fc+label vault"},
    {0x20f, "query vsan all-labels vault"},
    {0x401, "query matched src-label vault"},
    {0x402, "query matched 1-label vault"},
    {0x404, "query matched 2-labels vault"},
    {0x408, "query matched fc+label vault"},
    {0x1001, "show src-label"},
    {0x1002, "show 1-label"},
    {0x1004, "show 2-labels"},
    {0x1008, "show fc+label"},
    {0x100f, "show all-labels"},
};
inline constexpr auto fclrt_type_texts = text_table{"%xh??", fclrt_type_rows};

inline constexpr text_row fcmrt_type_rows[] = {
    {0x1, "query all"},
    {0x2, "query vsan"},
    {0x4, "query matched"},
    {0x8, "query vault"},
    {0x10, "query all using cmi"},
    {0x20, "query vsan using cmi"},
    {0x40, "query matched using cmi"},
    {0x100, "show"},
};
inline constexpr auto fcmrt_type_texts = text_table{"%xh??", fcmrt_type_rows};

inline constexpr text_row fcurt_type_rows[] = {
    {0x1, "query all"},
    {0x2, "query topo version"},
    {0x4, "query active"},
    {0x8, "query mine"},
    {0x10, "query route non-blocked"},
    {0x20, "query topo version non-blocked"},
    {0x40, "query config vault"},
    {0x80, "query data vault"},
    {0x100, "query vsan all"},
    {0x200, "query matched"},
    {0x400, "query vsan active"},
    {0x800, "query vsan/fc_id/mask"},
    {0x1000, "query vsan all using cmi"},
    {0x2000, "query matched using cmi"},
    {0x4000, "query all using cmi"},
    {0x8000, "query mine using cmi"},
    {0x10000, "query temporal shifted"},
    {0x20000, "show temporal shifted"},
    {0x100000, "show all"},
    {0x200000, "show topo version"},
    {0x400000, "show active"},
    {0x800000, "show mine"},
};
inline constexpr auto fcurt_type_texts = text_table{"%xh??", fcurt_type_rows};

inline constexpr text_row query_rows[] = {
    {0x1, "query"},       {0x2, "query non-blocked"}, {0x4, "query vault"},           {0x8, "query using cmi"},
    {0x10, "query vsan"}, {0x40, "query vsan vault"}, {0x80, "query vsan using cmi"}, {0x100, "show"},
};
inline constexpr auto query_texts = text_table{"%xh??", query_rows};

inline constexpr text_row oper_rows[] = {
    {RIB_OPER_UPDATE, "update"},
    {RIB_OPER_REMOVE, "remove"},
    {RIB_OPER_REMOVE_ALL, "remove all"},
    {RIB_OPER_MERGE, "merge"},
    {RIB_OPER_UPDATE_RSP, "update with response"},
    {RIB_OPER_REMOVE_RSP, "remove with response"},
    {RIB_OPER_REMOVE_ALL_RSP, "remove all with response"},
    {RIB_OPER_MERGE_RSP, "merge with response"},
    {RIB_OPER_UPDATE_CMI, "update using cmi"},
    {RIB_OPER_ADD_VERSION, "add version"},
    {RIB_OPER_DELETE_VERSION, "delete version"},
    {RIB_OPER_RESTORE, "restore"},
    {RIB_OPER_SUSPEND, "suspend"},
    {RIB_OPER_RESUME, "resume"},
    {RIB_OPER_REPLAY, "replay"},
    {RIB_OPER_VERIFY, "verify"},
};
inline constexpr auto oper_texts = text_table{"%xh??", oper_rows};

inline constexpr text_row action_rows[] = {
    {RIB_ACTION_ADD, "add"},
    {RIB_ACTION_DELETE, "delete"},
    {RIB_ACTION_CHANGE_FLAG, "change flag"},
    {RIB_ACTION_CHANGE_METRIC, "change metric"},
    {RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC, "change flag and metric"},
    {0x10, "add ucast+label"},
    {0x20, "delete ucast+label"},
    {0x40, "add label"},
    {0x80, "delete label"},
    {0x100, "add fc+label"},
    {0x200, "delete fc+label"},
    {0x400, "add label-tunnel"},
    {0x800, "delete label-tunnel"},
    {0x1000, "delete group"},
};
inline constexpr auto action_texts = text_table{"%xh??", action_rows};

inline constexpr text_row route_type_rows[] = {
    {0x0, "unknown"}, {0x1, "src-label"}, {0x2, "label"},       {0x4, "fc+label"},
    {0x10, "mcast"},  {0x100, "ucast"},   {0x200, "ucast+lbl"},
};
inline constexpr auto route_type_texts = text_table{"%xh??", route_type_rows};

inline constexpr text_row sync_rows[] = {
    {0, "label sync log"},
    {1, "mcast sync log"},
    {2, "ucast sync log"},
};
inline constexpr auto sync_texts = text_table{"%xh?? sync log", sync_rows};

} // namespace ribkit::diag
