// What the memory utilities cost, as ratios to their peers in the same run.
#include "mem/mem_bench.h"

int main() {
    ribkit::bench::bitmap_rows();
    ribkit::bench::pool_rows();
    ribkit::bench::buddy_rows();
    return 0;
}
