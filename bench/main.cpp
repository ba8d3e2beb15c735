// What the codec costs, as ratios to its peers in the same run.
#include "bench/codec_bench.h"

int main() {
    ribkit::bench::codec_rows();
    ribkit::bench::message_rows();
    ribkit::bench::format_rows();
    return 0;
}
