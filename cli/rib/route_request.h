// One route that is sent by hand: what the operator wrote, and the update that it makes.
#pragma once

#include "clients/table_reader.h"
#include "model/label.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace ribkit::cli {

/// What stands behind `ribkit route`, on the command line or on a line of a file. Empty: not said.
struct route_words {
    std::string action; ///< add, del, get, load
    std::string where;  ///< a destination; of load a file
    bool multicast = false;
    bool label = false;
    std::string vsan, cost;
    std::vector<std::string> vias;    ///< interfaces, of a label route each with labels to push behind plus signs
    std::vector<std::string> domains; ///< one for each of them
    std::vector<std::string> matches; ///< labels
    std::vector<std::string> sources; ///< interfaces
    bool direct = false;
    bool is_volatile = false;
};

template <class Table> struct route_of_table {
    using table = Table;

    typename Table::key key{};
    typename Table::route what{};
};

struct route_request {
    bool deletes = false; ///< else it is added
    /// Whether a unicast destination has a mask, or is only an address.
    bool has_mask = true;
    std::variant<route_of_table<clients::unicast_table>, route_of_table<clients::multicast_table>,
                 route_of_table<clients::label_table>>
        route;
};

/// Throws an input_error that says what is wrong with the words.
route_request request_of(const route_words &words);

/// "route 0x650000/0xff0000 of VSAN 1"
std::string where_text(const model::route_key &key);
std::string where_text(const model::label_key &key);

/// The same behind the name of the table.
std::string text_of(const route_request &request);

/// The update message of one record.
std::vector<uint8_t> update_of(const route_request &request, uint32_t client);
uint32_t opcode_of(const route_request &request);

} // namespace ribkit::cli
