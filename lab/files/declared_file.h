// What [[static]], [[group]], [[label]] and [[distance]] tables say, and events of what they declare.
#pragma once

#include "lab/fabric.h"

#include <chrono>

namespace ribkit::lab {

class table_reader;

/// All that a document declares; after its links. Throws a line_error.
void read_declarations(fabric &result, const table_reader &top);

/// Which clients there are, where the document says so. Throws a line_error.
void read_roles(fabric &result, const table_reader &top);

/// Whether the subject of an [[event]] is a declared route or a client.
bool names_declaration(const table_reader &event);

/// Such an event. Throws a line_error.
void read_declared_event(fabric &result, std::chrono::milliseconds at, const table_reader &event);

} // namespace ribkit::lab
