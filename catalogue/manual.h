// The offset manual: every layout as a table that a person reads, written from the same rows that convert it.
#pragma once

#include <string>

namespace ribkit::catalogue {

/// The whole document, Markdown.
std::string wire_formats();

} // namespace ribkit::catalogue
