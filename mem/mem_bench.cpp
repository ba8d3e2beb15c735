// What the memory utilities cost, as ratios to their peers in the same run.
#include "mem/mem_bench.h"

int main() {
    ribkit::mem::bitmap_rows();
    ribkit::mem::pool_rows();
    ribkit::mem::buddy_rows();
    return 0;
}
