#pragma once

namespace ribkit::bench {

/// Conversion of updates against memcpy and the plain loop.
void codec_rows();

} // namespace ribkit::bench
