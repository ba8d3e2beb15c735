// Digests of layouts: a change of a table that nobody meant is seen in a test.
#pragma once

#include "codec/layout.h"

namespace ribkit::codec {

/// A digest of what a layout does to bytes, entries included: it changes with every offset, size, kind, mask, count,
/// stride and bound, and with no name.
uint32_t wire_fingerprint(const layout &l);

/// A digest of what a layout says to a reader, its bytes included: it changes with every name, too.
uint32_t description_fingerprint(const layout &l);

} // namespace ribkit::codec
