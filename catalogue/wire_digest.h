// One number for the wire formats of all messages: two programs that agree in it understand each other's bytes.
#pragma once

#include <cstdint>

namespace ribkit::catalogue {

/// Changes with the name of a message and with all that happens to its bytes, and with nothing else.
uint32_t wire_digest();

} // namespace ribkit::catalogue
