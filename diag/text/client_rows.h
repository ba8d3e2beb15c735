// Result codes, client identities and what the SNMP route table says of a route. Cases and styles differ on purpose.
#pragma once

#include "diag/text/vocabulary.h"
#include "rib_codes.h"

namespace ribkit::diag {

inline constexpr text_row result_rows[] = {
    {RIB_OK, "ok"},
    {RIB_BAD_PARAMETERS, "bad parameters"},
    {RIB_NOT_SUPPORTED, "not supported"},
    {RIB_OUT_OF_MEMORY, "out of memory"},
    {RIB_NO_DATABASE, "no database"},
    {RIB_EMPTY_LIST, "empty list"},
    {RIB_EMPTY_TABLE, "empty table"},
    {RIB_MISSING_DEVICE, "missing device"},
    {RIB_MISSING_RESPONSE, "missing response"},
    {RIB_TIMEOUT, "timeout"},
    {RIB_HW_ACCESS_ERROR, "hw access error"},
    {RIB_HW_FULL, "hw tcam/ssram full"},
    {RIB_SW_BUG, "sw bug"},
    {RIB_FAILED, "failed"},
    {RIB_INDEX_USED, "index used"},
    {RIB_FLOW_EXISTED, "flow existed"},
    {RIB_NO_ENTRY, "no entry"},
    {RIB_EXCESS_DATA, "excess qip data"},
    {RIB_LC_UPGRADING, "lc upgrading"},
    {RIB_NOT_IN_HW, "not in hw"},
    {RIB_VSAN_TCAM_FULL, "vsan tcam full"},
    {RIB_OBJECT_OWNED, "object is owned by another app"},
};
inline constexpr auto result_texts = text_table{"%xh??", result_rows};

inline constexpr text_row client_rows[] = {
    {RIB_CLIENT_RIB, "rib"},
    {RIB_CLIENT_FSPF, "fspf"},
    {RIB_CLIENT_FCMPLS, "fcmpls"},
    {RIB_CLIENT_MCAST, "mcast"},
    {RIB_CLIENT_PORT_MANAGER, "Port Manager"},
    {RIB_CLIENT_FLOGI, "flogi"},
    {RIB_CLIENT_RSCN, "rscn"},
    {RIB_CLIENT_TLPORT, "tlport"},
    {RIB_CLIENT_FCDOMAIN, "fcdomain"},
    {RIB_CLIENT_LINE_CARD_MANAGER, "Line card Manager"},
    {RIB_CLIENT_SNMPD, "snmpd"},
    {RIB_CLIENT_PORT_CHANNEL_MANAGER, "Port Channel Manager"},
    {RIB_CLIENT_FCS, "fcs"},
    {RIB_CLIENT_CONFIG, "rib-config"},
    {RIB_CLIENT_VSAN_MANAGER, "VSAN manager"},
    {RIB_CLIENT_LC_PROCESS_MANAGER, "LC Process Manager"},
    {RIB_CLIENT_TEST, "rib-test"},
    {RIB_CLIENT_SPAN, "span"},
    {RIB_CLIENT_FC_TUNNEL, "fc-tunnel"},
    {RIB_CLIENT_RLIR, "rlir"},
    {RIB_CLIENT_OZEL, "ozel"},
    {RIB_CLIENT_BRIN, "brin"},
};
inline constexpr auto client_texts = text_table{"client %u??", client_rows};

/// The protocol word of a client's routes; a client without routes of its own is "unknown", not a number.
inline constexpr text_row client_proto_rows[] = {
    {RIB_CLIENT_RIB, "default"},  {RIB_CLIENT_FSPF, "fspf"},          {RIB_CLIENT_FCMPLS, "fc-mpls"},
    {RIB_CLIENT_MCAST, "mcast"},  {RIB_CLIENT_PORT_MANAGER, "local"}, {RIB_CLIENT_FLOGI, "local"},
    {RIB_CLIENT_TLPORT, "local"}, {RIB_CLIENT_FCDOMAIN, "dm ctrl"},   {RIB_CLIENT_CONFIG, "static"},
    {RIB_CLIENT_TEST, "test"},
};
inline constexpr auto client_proto_texts = text_table{"unknown", client_proto_rows};

inline constexpr auto fcroute_proto_texts =
    text_table{"%xh??", {{1, "other"}, {2, "local"}, {3, "static"}, {4, "fspf"}, {5, "mpls"}, {6, "mcast"}}};

inline constexpr auto fcroute_type_texts = text_table{"%xh??", {{1, "direct"}, {2, "remote"}}};

inline constexpr auto fcroute_perm_texts = text_table{"%xh??", {{1, "perm"}, {2, "volatile"}}};

} // namespace ribkit::diag
