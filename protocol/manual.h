// The protocol manual: what the RIB does with every message, operation, action and type of query, written from the rows
// that the services go by.
#pragma once

#include <string>

namespace ribkit::protocol {

/// The whole document, Markdown.
std::string protocol_manual();

} // namespace ribkit::protocol
