// The switch around the route database: supervisors, modules, VSANs, ports, and what the database holds and is asked.
#pragma once

#include "diag/text/vocabulary.h"

namespace ribkit::diag {

inline constexpr text_row sup_state_rows[] = {
    {0, "unknown"}, {1, "active"}, {2, "standby"}, {3, "cold standby"}, {4, "offline"},
};
inline constexpr auto sup_state_texts = text_table{"%xh??", sup_state_rows};

inline constexpr text_row mod_state_rows[] = {
    {0, "active"},
    {1, "standby"},
    {2, "cold standby"},
};
inline constexpr auto mod_state_texts = text_table{"%xh??", mod_state_rows};

inline constexpr text_row mod_type_rows[] = {
    {0, "line card"}, {1, "sup"}, {2, "ilc"}, {4, "sup hybrid"}, {5, "ips"}, {0xff, "unknown"},
};
inline constexpr auto mod_type_texts = text_table{"%xh??", mod_type_rows};

inline constexpr text_row vsan_state_rows[] = {
    {0, "no change"}, {1, "active"}, {2, "suspended"}, {3, "unconfig"}, {4, "config"},
};
inline constexpr auto vsan_state_texts = text_table{"%xh??", vsan_state_rows};

inline constexpr text_row vsan_state_chg_rows[] = {
    {0, "no change"},
    {1, "to suspended"},
    {2, "to active"},
};
inline constexpr auto vsan_state_chg_texts = text_table{"%xh??", vsan_state_chg_rows};

inline constexpr text_row vsan_bal_rows[] = {
    {1, "SID/DID"},
    {2, "SID/DID/OXID"},
};
inline constexpr auto vsan_bal_texts = text_table{"%xh??", vsan_bal_rows};

inline constexpr text_row vsan_iod_rows[] = {
    {0, "disabled"},
    {1, "enabled"},
};
inline constexpr auto vsan_iod_texts = text_table{"%xh??", vsan_iod_rows};

inline constexpr text_row pm_layer_rows[] = {
    {1, "fc"}, {2, "ethernet"}, {3, "virt fc"}, {4, "inband"}, {5, "eobc"}, {6, "mgmt"}, {99, "unknown"},
};
inline constexpr auto pm_layer_texts = text_table{"%xh??", pm_layer_rows};

inline constexpr text_row pm_state_rows[] = {
    {0x1, "up"}, {0x2, "down"}, {0x4, "testing"}, {0x8, "trunking"}, {0xff, "all"},
};
inline constexpr auto pm_state_texts = text_table{"%xh??", pm_state_rows};

inline constexpr uint32_t all_modes = 0xffff;

/// The bits stand in the order in which they are tried: FA comes before ST and tunnel.
inline constexpr text_row pm_mode_rows[] = {
    {0, "unknown"},    {all_modes, "all"}, {0x1, "auto"},  {0x2, "SD"},         {0x4, "E"},
    {0x8, "TE"},       {0x10, "TL"},       {0x20, "F"},    {0x40, "FL"},        {0x80, "FL-NPD"},
    {0x100, "FL-NPO"}, {0x200, "IPS"},     {0x400, "FV"},  {0x800, "EV"},       {0x1000, "TEM"},
    {0x2000, "Diag"},  {0x80000, "FA"},    {0x8000, "ST"}, {0x10000, "tunnel"}, {0x80000000, "default"},
};
inline constexpr auto pm_mode_texts = text_table{"%xh??", pm_mode_rows};

inline constexpr text_row pcm_event_rows[] = {
    {0, "none"}, {1, "create"}, {2, "delete"}, {3, "change"}, {4, "state change"}, {5, "mode change"},
};
inline constexpr auto pcm_event_texts = text_table{"%xh??", pcm_event_rows};

inline constexpr text_row mem_rows[] = {
    {1, "ack"},       {2, "domain reach"}, {3, "dist tree"},  {4, "label"},    {5, "mcast"},     {6, "active route"},
    {7, "topo"},      {8, "ucast+label"},  {9, "ucast"},      {10, "qip ref"}, {11, "registry"}, {12, "track"},
    {13, "sys attr"}, {14, "verify"},      {15, "vsan attr"}, {16, "pending"},
};
inline constexpr auto mem_texts = text_table{"%xh??", mem_rows};

inline constexpr text_row in_rows[] = {
    {1, "ha"},          {2, "memory pool"}, {3, "label ack q"},  {4, "mcast ack q"},
    {5, "ucast ack q"}, {6, "apps ack q"},  {7, "pending list"}, {8, "switchover log"},
};
inline constexpr auto in_texts = text_table{"data %xh??", in_rows};

inline constexpr text_row verf_rows[] = {
    {0x10, "verify rib label with vault"}, {0x20, "verify rib mcast with vault"}, {0x40, "verify rib ucast with vault"},
    {0x100, "verify rib label with fib"},  {0x200, "verify rib mcast with fib"},  {0x400, "verify rib ucast with fib"},
    {0x1000, "clear verify label report"}, {0x2000, "clear verify mcast report"}, {0x4000, "clear verify ucast report"},
};
inline constexpr auto verf_texts = text_table{"verify %xh??", verf_rows};

inline constexpr text_row test_type_rows[] = {
    {1, "disable eng debug"},
    {2, "enable eng debug"},
    {3, "query eng debug"},
};
inline constexpr auto test_type_texts = text_table{"%xh??", test_type_rows};

inline constexpr text_row cmi_msg_rows[] = {
    {1, "get"},
    {2, "get next"},
    {3, "set"},
    {4, "delete"},
};
inline constexpr auto cmi_msg_texts = text_table{"%xh??", cmi_msg_rows};

inline constexpr text_row time_op_rows[] = {
    {1, "started"},
    {2, "stopped"},
    {3, "expired"},
};
inline constexpr auto time_op_texts = text_table{"%xh??", time_op_rows};

} // namespace ribkit::diag
