// The parts of codec_bench.
#pragma once

namespace ribkit::bench {

/// Conversion of updates against memcpy and the plain loop.
void codec_rows();

/// The same update through other formats.
void format_rows();

/// Single messages against the plain loop, and what a check costs.
void message_rows();

} // namespace ribkit::bench
