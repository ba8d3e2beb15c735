// Rows as lines of tables; the texts of numbers are those of the vocabularies.
#include "protocol/manual.h"

#include "protocol/fib/fib_requests.h"
#include "protocol/query_kinds.h"
#include "protocol/requests.h"
#include "protocol/uses.h"
#include "rib_text.h"

#include <array>
#include <cstdio>
#include <initializer_list>
#include <string_view>

namespace ribkit::protocol {

namespace {

using vocabulary = decltype(rib_oper_to_str);

std::string text_of(vocabulary *texts, uint32_t number) {
    std::array<char, 64> text{};
    texts(number, text.data());
    return text.data();
}

std::string hex(uint32_t number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%x", number);
    return text.data();
}

void print_cells(std::string &text, std::initializer_list<std::string_view> cells) {
    for (const std::string_view cell : cells) {
        text += cell.empty() ? "| " : "| ";
        text += cell;
        text += cell.empty() ? "" : " ";
    }
    text += "|\n";
}

void print_head(std::string &text, std::string_view title, std::initializer_list<std::string_view> columns) {
    text += "\n## ";
    text += title;
    text += "\n\n";
    print_cells(text, columns);
    for (size_t i = 0; i < columns.size(); i++) {
        text += "| --- ";
    }
    text += "|\n";
}

std::string_view place_text(destination_of to) {
    switch (to) {
    case destination_of::rib:
        return "the RIB";
    case destination_of::listeners:
        return "listeners";
    case destination_of::module:
        return "a module";
    default:
        return "listeners, modules";
    }
}

/// "`rib_fcurt_update`, `fib_node` + `fib_port`", from names between blanks and plus signs.
std::string quoted(std::string_view names) {
    std::string text = names.empty() ? "" : "`";
    for (const char letter : names) {
        if (letter == ' ' || letter == '+') {
            text += letter == ' ' ? "`, `" : "` + `";
        } else {
            text += letter;
        }
    }
    return text += names.empty() ? "" : "`";
}

void print_requests(std::string &text, std::string_view title, std::span<const request_row> rows) {
    print_head(text, title,
               {"Opcode", "Name", "Message", "From", "To", "What it does", "Answer", "What it says", "What it causes"});
    for (const request_row &row : rows) {
        print_cells(text, {hex(row.opcode), std::string("`RIBKIT_OPCODE_") + row.name + '`', quoted(row.message),
                           row.sender, place_text(row.to), row.does, quoted(row.answer), row.answers, row.causes});
    }
}

void print_meanings(std::string &text, std::string_view title, vocabulary *texts, std::span<const meaning_row> rows) {
    print_head(text, title, {"Number", "Text", "What it does", "Answer", "What it causes"});
    for (const meaning_row &row : rows) {
        print_cells(text, {hex(row.number), text_of(texts, row.number), row.does, row.answers, row.causes});
    }
}

std::string_view keys_text(chosen_keys keys) {
    switch (keys) {
    case chosen_keys::vsan:
        return ", of the VSAN, from the key on";
    case chosen_keys::holding:
        return ", of the VSAN, whose destination the FC ID is in, from the mask on";
    case chosen_keys::exact:
        return ", of just this key";
    default:
        return ", from the key on";
    }
}

std::string routes_text(const query_kind &kind) {
    return kind.routes == chosen_routes::active ? "active routes"
           : kind.routes == chosen_routes::mine ? "the asker's routes"
                                                : "routes";
}

/// What a type of query is answered with.
std::string answer_text(const query_kind &kind) {
    if (kind.refused != RIB_OK) {
        return '"' + text_of(rib_rtn_to_str, kind.refused) + '"';
    }
    std::string text;
    if (kind.form == answer_form::versions) {
        text = "topology versions of the first client and VSAN from owner and VSAN on";
    } else {
        text = routes_text(kind);
        text += keys_text(kind.keys);
    }
    return text += kind.in_envelope ? "; in an envelope only" : "";
}

std::string message_text(const query_kind &kind, std::string_view table, uint32_t show) {
    const bool shown = (kind.type & show) != 0;
    const std::string name = kind.form == answer_form::none ? ""
                             : kind.form == answer_form::versions && shown
                                 ? "rib_topo"
                                 : "rib_" + std::string(table) + (shown ? "_info" : "_update");
    return quoted(name);
}

void print_kinds(std::string &text, std::string_view title, vocabulary *texts, std::span<const query_kind> kinds,
                 std::string_view table, uint32_t show) {
    print_head(text, title, {"Type", "Text", "Answer", "What it says"});
    for (const query_kind &kind : kinds) {
        print_cells(text,
                    {hex(kind.type), text_of(texts, kind.type), message_text(kind, table, show), answer_text(kind)});
    }
}

std::string_view label_routes_text(uint32_t routes) {
    switch (routes) {
    case label_routes_by_source:
        return "by source";
    case label_routes_one_label:
        return "by one label";
    case label_routes_two_labels:
        return "by two labels";
    case label_routes_by_fcid:
        return "by destination";
    default:
        return "of any type";
    }
}

void print_label_kinds(std::string &text) {
    print_head(text, "Types of label queries", {"Type", "Text", "Answer", "What it says"});
    for (const query_kind &scope : label_scopes) {
        for (const uint32_t routes : {label_routes_by_source, label_routes_one_label, label_routes_two_labels,
                                      label_routes_by_fcid, label_routes_all}) {
            const uint32_t type = scope.type | routes;
            if (find_label_kind(type) != nullptr) {
                const std::string which = scope.refused != RIB_OK
                                              ? ""
                                              : std::string("label routes ").append(label_routes_text(routes)) + ": ";
                print_cells(text, {hex(type), text_of(rib_fclrt_type_to_str, type),
                                   message_text(scope, "fclrt", 0x1000), which + answer_text(scope)});
            }
        }
    }
}

void print_state_kinds(std::string &text) {
    print_head(text, "Types of other queries", {"Type", "Text", "What it says"});
    for (const query_kind &kind : state_kinds) {
        const std::string says = kind.refused != RIB_OK           ? answer_text(kind)
                                 : kind.keys == chosen_keys::vsan ? "the entry of the VSAN"
                                                                  : "entries from the VSAN or module on";
        print_cells(text, {hex(kind.type), text_of(rib_query_to_str, kind.type),
                           says + (kind.in_envelope ? "; in an envelope only" : "")});
    }
}

void print_uses(std::string &text) {
    print_head(text, "Words without a name", {"Message", "Word", "Use", "Texts"});
    for (const word_use &one : word_uses) {
        print_cells(text, {quoted(one.message->name), one.word, one.use, quoted(one.vocabulary)});
    }
}

void print_modules(std::string &text) {
    print_requests(text, "Messages of modules", fib_requests);
    text += R"(
Module N, from 1, listens at node 0xff000401, service access point N. What a module is sent and answers may have several
messages one behind the other (+): a head and as many paths as it says; an answer, and in front of it the keys of the paths
that did not take effect, where there are any. What it cannot use it answers with `fib_fcu_rsp`, whose first word says why.

The RIB numbers what it sends to a module. A module takes a number only where it is later than the last one that it took
(numbers go on at 0 behind the largest); what comes late, or twice, is answered with "index used", changes nothing and
names all of its keys. The module tells the last number with its record, and the RIB goes on from there.
A record that says that the module is upgrading or offline, or has ended, is answered and changes nothing where it comes
late: it is of the instance before, its last number is below the one that was told, or the module was not offline any more.

A path's control word is that of a label route's way: it says how many labels are taken off and pushed, three at most,
and on a unicast path which domain is next. A route with more labels at one way is in no module; of more than 16 ways a
module has the first. A unicast path's kind follows from its other fields: the sender's number is not the module's flag.

A key that did not take effect is named with a status: 0x200 "in rib/fib not in hw" where the table, or the VSAN's share of
it, is full, 0x80 "bad param in fib" where there can be no such entry. While a module is upgrading it answers "lc upgrading"
and takes nothing.
)";
    print_meanings(text, "Operations of updates for modules", fib_oper_to_str, fib_operations);
}

} // namespace

std::string protocol_manual() {
    std::string text = R"(# The protocol of the RIB

What clients, the RIB and the modules say to one another, written by `./run golden` from the rows that the RIB answers by. The formats
are those of [wire-formats.md](wire-formats.md); addresses and opcodes stand in
[include/ribkit_rib.h](../include/ribkit_rib.h), and how messages travel in [messaging.md](messaging.md).

A request may come in an envelope; its answer then does, too. Whatever a request holds, it is answered: where it cannot be
used, with `rib_fcurt_rsp`, whose first word says why. Texts of numbers are those of `ribkit text`.

Routes belong to the client that added them. A unicast destination has a route of each of its owners; active is the one
whose owner has the lowest route distance, then the cheapest, then the one of the lowest identity. The sender's active bit
is ignored. A label or multicast route has one owner: another's is refused with "object is owned by another app".

A list that is longer than an answer comes in several: the next query starts behind the last entry of the last answer. A
route that is there all the time is met once, whatever changes in between. A route that is longer than 64 KiB has an answer
for itself, which is as long as it; listeners are told in its place that some could not be told.

The answer to an operation with response says what became of the routes in the modules: it comes when every module that has
told of itself has answered for what the request has changed, and at once where there is none. It waits for 5 s at most, and
keeps nobody else waiting; of one sender 64 requests may wait, of all 1024, and what is beyond is refused with "out of
memory" and not done. Its result is that of the RIB where it is not "ok", else the worst of the modules':

| Result | What it says |
| --- | --- |
| timeout | a module has not answered in time, or has not for some time: then nobody waits for it until it does |
| missing device | a module that was there is not there any more, or has said that it leaves |
| missing response | a module's answer was damaged; where eight such answers were to the begin or the end of a merge or the like, it is sent nothing more until it tells of itself again |
| lc upgrading | a module is upgrading |
| any other | the module's own: it has no room |

Accepted are the routes that every module took. The others stay in the RIB, and are tried again when the module has room
again, answers again or returns. A route that is changed again before it was sent to a module is sent once, as it is then.

A comparison is answered like that, too, and is "failed" where something differs: a module has not what it shall have, has
something else, or has more. Accepted are the routes that every module has as they are; none, where a module has not said
all. What changes meanwhile is no difference. The report of a table is that of its last comparison; of several modules
that differ in a route it tells the first one's state, and of more than 65536 routes the first. Without any module a
comparison is answered with "missing device".

A RIB that starts has no routes. A module that has entries then keeps them until the clients have brought theirs back:
until no update of routes has come for 500 ms, but 3 s at most (`ribkit rib --hold`). Then what nobody has brought back is
removed. A route that changes meanwhile and whose answer waits for modules is sent at once.
)";
    print_requests(text, "Messages", requests);
    print_meanings(text, "Operations of updates", rib_oper_to_str, operations);
    print_meanings(text, "Actions of records", rib_action_to_str, actions);
    print_kinds(text, "Types of unicast queries", rib_fcurt_type_to_str, unicast_kinds, "fcurt", 0xf00000);
    print_kinds(text, "Types of multicast queries", rib_fcmrt_type_to_str, multicast_kinds, "fcmrt", 0x100);
    print_label_kinds(text);
    print_state_kinds(text);
    print_meanings(text, "Comparisons", rib_verf_to_str, verifications);
    print_modules(text);
    print_uses(text);
    return text;
}

} // namespace ribkit::protocol
