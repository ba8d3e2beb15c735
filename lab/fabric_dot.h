// A fabric as a drawing: the text that Graphviz makes a picture of.
#pragma once

#include "lab/fabric.h"

#include <string>

namespace ribkit::lab {

/// An undirected graph: a node for each switch, the local one with a double border; an edge for each link with its cost
/// and interfaces, dashed where the link is down at the start, with its VSANs where it does not carry all.
std::string fabric_dot(const fabric &f);

} // namespace ribkit::lab
