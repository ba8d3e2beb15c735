// What the memory benchmark prints, utility by utility.
#pragma once

namespace ribkit::mem {

/// Each against its naive form and against what one would take from elsewhere.
void bitmap_rows();
void pool_rows();
void buddy_rows();

} // namespace ribkit::mem
