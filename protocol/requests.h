// Every message that goes to the RIB or comes from it without being asked for: one row each. The service answers by
// these rows, an envelope's content is known by them, and docs/protocol.md is written from them.
#pragma once

#include "ribkit_rib.h"

#include <cstdint>
#include <string_view>

namespace ribkit::protocol {

/// Where a message goes.
enum class destination_of : uint8_t { rib, listeners, listeners_and_modules, module };

struct request_row {
    uint32_t opcode;
    const char *name;    ///< behind RIBKIT_OPCODE_
    const char *message; ///< of the catalogue, or the claim; "" for none; "a+b": a, and any number of b behind it
    const char *answer;  ///< messages of the catalogue, or such as have several, separated by blanks; "" for none
    destination_of to;
    const char *sender;
    const char *does;
    const char *answers;
    const char *causes;
};

inline constexpr request_row requests[] = {
    {RIBKIT_OPCODE_PROBE, "PROBE", "", "rib_fcurt_rsp", destination_of::rib, "anybody",
     "Asks whether a RIB is there. It has no payload.", "\"not supported\"", ""},
    {RIBKIT_OPCODE_FCURT_UPDATE, "FCURT_UPDATE", "rib_fcurt_update", "rib_fcurt_rsp", destination_of::rib, "client",
     "Changes the client's own unicast routes of a VSAN, as its operation and the actions of its records say.",
     "result, operation, VSAN, how many records took effect, how many routes the VSAN now has",
     "a notification of what changed; entries of the unicast log"},
    {RIBKIT_OPCODE_FCURT_QUERY, "FCURT_QUERY", "rib_fcurt_query", "rib_fcurt_update rib_fcurt_info rib_topo",
     destination_of::rib, "client",
     "Asks for unicast routes or topology versions. The VSAN's word has the VSAN in its low 12 bits and above them the "
     "first owner of interest of the first key; the next query starts behind the last key and owner.",
     "what its type says, of one VSAN and one client; none where there are no more", ""},
    {RIBKIT_OPCODE_CLAIM, "CLAIM", "rib_claim", "rib_claim", destination_of::rib, "RIB",
     "Five words: a claim to the address, where a server lets several RIBs listen.", "the claim of whoever hears it",
     "the later RIB gives way"},
    {RIBKIT_OPCODE_WIRE_DIGESTS, "WIRE_DIGESTS", "", "rib_wire_digests", destination_of::rib, "anybody",
     "Asks what the bytes of the RIB's messages mean, so that a program of another version is not misunderstood. It "
     "has "
     "no payload.",
     "a digest over all messages, as `ribkit --version` shows it; how many there are; of each its name in 28 bytes and "
     "its digest",
     ""},
    {RIBKIT_OPCODE_FCMRT_UPDATE, "FCMRT_UPDATE", "rib_fcmrt_update", "rib_fcmrt_rsp", destination_of::rib, "client",
     "Changes the client's own multicast routes of a VSAN; FC ID 0 is its distribution tree.", "as FCURT_UPDATE",
     "a notification of what changed; entries of the multicast log"},
    {RIBKIT_OPCODE_FCMRT_QUERY, "FCMRT_QUERY", "rib_fcmrt_query", "rib_fcmrt_update rib_fcmrt_info",
     destination_of::rib, "client", "Asks for multicast routes; the next query starts behind the last key.",
     "what its type says; none where there are no more", ""},
    {RIBKIT_OPCODE_FCLRT_UPDATE, "FCLRT_UPDATE", "rib_fclrt_update", "rib_fclrt_rsp", destination_of::rib, "client",
     "Changes the client's own label routes of a VSAN.", "as FCURT_UPDATE",
     "a notification of what changed; entries of the label log"},
    {RIBKIT_OPCODE_FCLRT_QUERY, "FCLRT_QUERY", "rib_fclrt_query", "rib_fclrt_update rib_fclrt_info",
     destination_of::rib, "client",
     "Asks for label routes. The cursor is the type of the first route; 0 is that of the query, or any. A route by "
     "source has its interface in the place of the FC ID.",
     "what its type says; none where there are no more", ""},
    {RIBKIT_OPCODE_DB_QUERY, "DB_QUERY", "rib_db_query", "rib_db_info", destination_of::rib, "client",
     "Asks how many routes each VSAN has, from a VSAN on.", "VSANs that have routes; when the database was created",
     ""},
    {RIBKIT_OPCODE_DM_QUERY, "DM_QUERY", "rib_dm_query", "rib_dm_info", destination_of::rib, "client",
     "Asks which domains are reached, from a VSAN on.",
     "of each VSAN with unicast routes the domains to which one leads, and those to which an active one is direct", ""},
    {RIBKIT_OPCODE_SYS_QUERY, "SYS_QUERY", "rib_sys_query", "rib_sys_info", destination_of::rib, "client",
     "Asks for modules and their ports, from a module on, counted from 0.", "the modules that have told of themselves",
     ""},
    {RIBKIT_OPCODE_IN_QUERY, "IN_QUERY", "rib_in_query", "rib_in_info", destination_of::rib, "client",
     "Asks for a structure of the RIB's own, or with a result code in its place how often a client was refused so.",
     "its availability, or its memory by kind; of another structure how much it holds; how often", ""},
    {RIBKIT_OPCODE_REG_QUERY, "REG_QUERY", "rib_reg_query", "rib_reg_info", destination_of::rib, "client",
     "Asks who has registered.", "the clients, by identity, with distance and the first 7 characters of their names",
     ""},
    {RIBKIT_OPCODE_NODE_QUERY, "NODE_QUERY", "rib_node_query", "rib_node_info", destination_of::rib, "client",
     "Asks for a module's record.", "\"missing device\" where the module has not told of itself", ""},
    {RIBKIT_OPCODE_TEST_QUERY, "TEST_QUERY", "rib_test_query", "rib_test_info", destination_of::rib, "client",
     "Turns on or off, or asks for, that every request leaves a line in the history.",
     "the type that was asked for; 1 where it is on now, else 0", "lines of history while it is on"},
    {RIBKIT_OPCODE_VERF_QUERY, "VERF_QUERY", "rib_verf_query", "rib_verf_info", destination_of::rib, "client",
     "Asks what the last comparison of a table has found.",
     "when it was begun and completed (0: not every module has said all), and the routes that differ, from a key on, "
     "with "
     "what is the matter with them; \"no entry\" where there was none",
     ""},
    {RIBKIT_OPCODE_VERIFY, "VERIFY", "rib_verify", "rib_fcurt_rsp", destination_of::rib, "client",
     "Compares a table with every module, or forgets what was found. With the vault: \"no database\".",
     "result, operation, 0, how many routes every module has as they are, how many there are", "a report"},
    {RIBKIT_OPCODE_REGISTER, "REGISTER", "rib_register", "rib_fcurt_rsp", destination_of::rib, "client",
     "Registers a client with its route distance and its name. It is repeated every 10 s; a client that is not heard "
     "of "
     "for 30 s is forgotten, and has its default distance again.",
     "result", "its routes may become active or not; notifications are sent while anybody is registered"},
    {RIBKIT_OPCODE_SYNC_QUERY, "SYNC_QUERY", "rib_sync_query", "rib_sync_fcu rib_sync_fcm rib_sync_fcl rib_sync_info",
     destination_of::rib, "client", "Asks for the changes of a table from a number on, of the latest 128.",
     "the changes one behind the other, then a marker with the number to ask for next; where there are none, or not "
     "all "
     "that are asked for: the number that the next change will have, and how many there are",
     ""},
    {RIBKIT_OPCODE_VSAN_QUERY, "VSAN_QUERY", "vsan_query", "fib_vsan_update", destination_of::rib, "client",
     "Asks for states of VSANs, from a VSAN on.",
     "VSANs that have routes, are suspended, or are of the fabric that the RIB was started with", ""},
    {RIBKIT_OPCODE_FCU_LB_QUERY, "FCU_LB_QUERY", "rib_fib_fcu_lb_query", "rib_fib_fcu_lb_rsp", destination_of::rib,
     "client", "Asks by which interface the frames of an exchange leave.",
     "\"no entry\" where no active route leads there; else the next hop that S_ID, D_ID and OX_ID choose", ""},
    {RIBKIT_OPCODE_STARTED, "STARTED", "", "", destination_of::listeners_and_modules, "RIB",
     "Tells that the RIB has started, with empty tables. It has no payload.", "", "clients send their routes again"},
    {RIBKIT_OPCODE_FCURT_NOTE, "FCURT_NOTE", "rib_fcurt_update", "", destination_of::listeners, "RIB",
     "Tells unicast routes that have changed, in the order of the changes: of one client and VSAN, as they are now, "
     "with the action that changed them. Without any route: some could not be told.",
     "", "a listener that has missed some reads again"},
    {RIBKIT_OPCODE_FCMRT_NOTE, "FCMRT_NOTE", "rib_fcmrt_update", "", destination_of::listeners, "RIB",
     "Tells multicast routes that have changed, as FCURT_NOTE.", "", "as FCURT_NOTE"},
    {RIBKIT_OPCODE_FCLRT_NOTE, "FCLRT_NOTE", "rib_fclrt_update", "", destination_of::listeners, "RIB",
     "Tells label routes that have changed, as FCURT_NOTE.", "", "as FCURT_NOTE"},
};

/// Null where there is none.
constexpr const request_row *find_request(uint32_t opcode) {
    for (const request_row &row : requests) {
        if (row.opcode == opcode) {
            return &row;
        }
    }
    return nullptr;
}

/// What a number of the vocabularies means to the RIB.
struct meaning_row {
    uint32_t number;
    const char *does;
    const char *answers = "";
    const char *causes = "";
};

/// Operations of updates, of all three tables where nothing else is said.
inline constexpr meaning_row operations[] = {
    {0x1, "Each record does what its action says.", "at once", "notification, log"},
    {0x2, "The sender's routes of the records' keys are removed.",
     "at once; \"no entry\" or \"object is owned\" where "
     "the sender has none",
     "notification, log"},
    {0x4, "All routes of the sender in the VSAN's table are removed; records are not allowed.",
     "at once, with how many there were", "notification, log"},
    {0x8,
     "Routes are stored and marked. Without records it ends the merge: the sender's routes that are not marked are "
     "removed, and all marks.",
     "at once", "notification, log"},
    {0x10, "As \"update\".", "when the modules have answered", "notification, log"},
    {0x20, "As \"remove\".", "when the modules have answered", "notification, log"},
    {0x40, "As \"remove all\".", "when the modules have answered", "notification, log"},
    {0x80, "As \"merge\".", "when the modules have answered", "notification, log"},
    {0x100, "As \"update\", in an envelope only.", "at once, in an envelope", "notification, log"},
    {0x200, "The topology versions become the list of the sender and VSAN. In unicast updates only.", "at once", ""},
    {0x400, "The list of topology versions of the sender and VSAN is removed. In unicast updates only.",
     "at once; \"no entry\" where there is none", ""},
    {0x1000, "As \"update\".", "at once", "log"},
    {0x2000, "The VSAN is suspended: its routes stay in the RIB and leave the modules. Only the VSAN manager may.",
     "at once", "history"},
    {0x4000, "The VSAN is resumed: its routes come back to the modules. Only the VSAN manager may.", "at once",
     "history"},
    {0x8000, "The sender's own routes of the VSAN's table come back to it as notifications with this operation.",
     "at once, with how many there are", "notification"},
    {0x10000, "The VSAN's table is compared with the modules.",
     "when the modules have answered, with how many routes every module has as they are", "a report"},
};

/// Actions of records.
inline constexpr meaning_row actions[] = {
    {0x1, "The sender's route of this key is added, or put in place of the one that it has."},
    {0x2, "The sender's route of this key is removed."},
    {0x4, "Its flags are changed; in unicast updates only."},
    {0x8, "Its metric is changed; in unicast updates only."},
    {0xc, "Both are changed; in unicast updates only."},
    {0x10, "A label route of type 4 without labels to match is added: labels to push for a unicast destination."},
    {0x20, "It is removed."},
    {0x40, "A label route by labels, or by source and labels, is added."},
    {0x80, "It is removed."},
    {0x100, "A label route of type 4 with labels to match is added."},
    {0x200, "It is removed."},
    {0x400, "A label route by source without labels to match is added: all that comes in there goes into the tunnel."},
    {0x800, "It is removed."},
    {0x1000, "The sender's multicast routes of the group, which FC ID and mask name, are removed."},
};

/// Comparisons, of RIBKIT_OPCODE_VERIFY.
inline constexpr meaning_row verifications[] = {
    {0x10, "Of the label table with the vault.", "\"no database\""},
    {0x20, "Of the multicast table with the vault.", "\"no database\""},
    {0x40, "Of the unicast table with the vault.", "\"no database\""},
    {0x100, "Of the label table with every module.", "when the modules have answered", "a report"},
    {0x200, "Of the multicast table with every module.", "when the modules have answered", "a report"},
    {0x400, "Of the unicast table with every module.", "when the modules have answered", "a report"},
    {0x1000, "The report about the label table is forgotten.", "\"no entry\" where there is none"},
    {0x2000, "The report about the multicast table is forgotten.", "\"no entry\" where there is none"},
    {0x4000, "The report about the unicast table is forgotten.", "\"no entry\" where there is none"},
};

} // namespace ribkit::protocol
