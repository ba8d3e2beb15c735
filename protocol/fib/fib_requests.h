// Every message that goes to a module, or comes from one without being asked for: one row each. Modules answer by these
// rows, and docs/protocol.md is written from them.
#pragma once

#include "protocol/requests.h"

namespace ribkit::protocol {

/// Where module number N listens.
constexpr qip_addr module_address(uint32_t number) { return {RIBKIT_NODE_MODULE, number}; }

inline constexpr request_row fib_requests[] = {
    {RIBKIT_OPCODE_FIB_FCU_UPDATE, "FIB_FCU_UPDATE", "fib_fcu_update+fib_fcu_path",
     "fib_fcu_rsp fib_fcu_rsp_path+fib_fcu_rsp", destination_of::module, "RIB",
     "Changes the module's unicast entries of a VSAN, as its operation says.",
     "result, operation, VSAN, how many paths took effect, sequence; before it, where not all did, the keys of the "
     "others",
     "the module's state may change"},
    {RIBKIT_OPCODE_FIB_FCM_UPDATE, "FIB_FCM_UPDATE", "fib_fcm_update+fib_fcm_path",
     "fib_fcm_rsp fib_fcm_rsp_path+fib_fcm_rsp", destination_of::module, "RIB",
     "Changes the module's multicast entries of a VSAN. A key of the answer has no mask: it stands for all of its FC "
     "ID.",
     "as FIB_FCU_UPDATE", "as FIB_FCU_UPDATE"},
    {RIBKIT_OPCODE_FIB_FCL_UPDATE, "FIB_FCL_UPDATE", "fib_fcl_update+fib_fcl_path",
     "fib_fcl_rsp fib_fcl_rsp_path+fib_fcl_rsp", destination_of::module, "RIB",
     "Changes the module's label entries of a VSAN.", "as FIB_FCU_UPDATE", "as FIB_FCU_UPDATE"},
    {RIBKIT_OPCODE_FIB_VSAN_UPDATE, "FIB_VSAN_UPDATE", "fib_vsan_update", "fib_fcu_rsp", destination_of::module, "RIB",
     "Tells VSANs and their settings; VSAN 0 tells the latency of all. State and balancing 0 change nothing.",
     "as FIB_FCU_UPDATE", ""},
    {RIBKIT_OPCODE_FIB_REWRITE_UPDATE, "FIB_REWRITE_UPDATE", "fib_vsan_rewrite_update+fib_vsan_rewrite_path",
     "fib_vsan_rewrite_rsp", destination_of::module, "RIB",
     "Changes which frames of a VSAN go on in another one, with other addresses. The operations are update, remove and "
     "remove all.",
     "as FIB_FCU_UPDATE", ""},
    {RIBKIT_OPCODE_FIB_FCU_QUERY, "FIB_FCU_QUERY", "rib_fcurt_query", "fib_fcu_update+fib_fcu_path",
     destination_of::module, "anybody",
     "Asks for unicast entries, from a key on. Types are those of queries of all routes, of a VSAN's and of one key.",
     "entries of one VSAN, in the order of their keys; none where there are no more", ""},
    {RIBKIT_OPCODE_FIB_FCM_QUERY, "FIB_FCM_QUERY", "rib_fcmrt_query", "fib_fcm_update+fib_fcm_path",
     destination_of::module, "anybody", "Asks for multicast entries, as FIB_FCU_QUERY.", "as FIB_FCU_QUERY", ""},
    {RIBKIT_OPCODE_FIB_FCL_QUERY, "FIB_FCL_QUERY", "rib_fclrt_query", "fib_fcl_update+fib_fcl_path",
     destination_of::module, "anybody", "Asks for label entries, as FIB_FCU_QUERY: of all types, or of one key.",
     "as FIB_FCU_QUERY", ""},
    {RIBKIT_OPCODE_FIB_NODE_QUERY, "FIB_NODE_QUERY", "rib_node_query", "fib_node+fib_sync+fib_port",
     destination_of::module, "anybody", "Asks the module for what it tells the RIB of itself.", "as FIB_NODE", ""},
    {RIBKIT_OPCODE_FIB_VSAN_QUERY, "FIB_VSAN_QUERY", "vsan_query", "fib_vsan_update", destination_of::module, "anybody",
     "Asks for the VSANs that the module knows, from one on.", "their settings; none where there are no more", ""},
    {RIBKIT_OPCODE_FIB_LB_QUERY, "FIB_LB_QUERY", "rib_fib_fcu_lb_query", "rib_fib_fcu_lb_rsp", destination_of::module,
     "anybody", "Asks by which interface the frames of an exchange leave.",
     "\"no entry\" where no entry leads there; else what the RIB would say", ""},
    {RIBKIT_OPCODE_FIB_VERF_QUERY, "FIB_VERF_QUERY", "rib_verf_query",
     "fib_fcu_rsp_path fib_fcm_rsp_path fib_fcl_rsp_path", destination_of::module, "anybody",
     "Asks which keys of a table, which the type names, the last comparisons have found different, from a key on. Of a "
     "label key the third word is the type of the RIB's routes.",
     "the keys, with what is the matter with them, as many as are wanted and an answer holds; none where there are no "
     "more",
     ""},
    {RIBKIT_OPCODE_FIB_NODE, "FIB_NODE", "fib_node+fib_sync+fib_port", "rib_fcurt_rsp", destination_of::rib, "module",
     "A module tells of itself, when it starts, when its state changes and when it has found the RIB again: its "
     "record, its instance with the last sequence number that it took, and as many ports as the record says.",
     "result", "a module of another instance is given all of its entries"},
};

/// Null where there is none.
constexpr const request_row *find_fib_request(uint32_t opcode) {
    for (const request_row &row : fib_requests) {
        if (row.opcode == opcode) {
            return &row;
        }
    }
    return nullptr;
}

/// Operations of updates for modules.
inline constexpr meaning_row fib_operations[] = {
    {0x1, "Each path is an entry that is added or put in place of the one of its key.", "how many paths took effect"},
    {0x2, "The entries of the paths' keys are removed. What is not there is removed already.",
     "how many paths took effect"},
    {0x4, "All entries of the VSAN's table are removed; of VSAN 0 those of every VSAN. Without paths.",
     "how many entries there were"},
    {0x10,
     "A merge begins: what it names stays. Without paths. VSAN 0 is every VSAN. One that goes on already "
     "begins again.",
     "none", "the module is loading"},
    {0x20, "As \"update\", and names the entries. Between begin and end of a merge only; else \"no entry\".",
     "how many paths took effect"},
    {0x40,
     "The merge ends: entries that no \"merge\" has named are removed. Without paths. \"no entry\" where none has "
     "begun.",
     "how many entries were removed", "behind the last merge the module is active"},
    {0x100, "A comparison begins. Without paths. VSAN 0 is every VSAN.", "none", "the module is verifying"},
    {0x200, "Each path is compared with the entry of its key; nothing changes. \"no entry\" where none has begun.",
     "how many are the same", "the others are named, and found by a query"},
    {0x400, "The comparison ends: entries that were not named are named in the answer. Without paths.",
     "how many entries were compared", "behind the last comparison the module is what it was"},
    {0x1000, "Of counters of adjacencies, which modules do not have.", "\"not supported\""},
    {0x2000, "As 0x1000.", "\"not supported\""},
    {0x4000, "Of counters of ports, which modules do not have.", "\"not supported\""},
    {0x8000, "As 0x4000.", "\"not supported\""},
};

} // namespace ribkit::protocol
