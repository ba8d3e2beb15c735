// The form of a buddy descriptor that can hold anything: 16 lists of free and 16 of used blocks, walked.
#pragma once

#include "mem/buddy/buddy.h"

namespace ribkit::mem {

void clear_lists(bud_lists &lists);
/// Room for this many nodes. False when memory fails.
bool reserve_nodes(bud_lists &lists, uint64_t count);
/// Turns the chunks into lists; needs no memory. Does nothing where the lists are kept already.
void walk_from_now_on(struct bud &bud);

void bud_list_insert(struct bud &bud, block_kind kind, uint32_t size, uint32_t node);
uint32_t bud_list_add(struct bud &bud, block_kind kind, uint32_t size, uint32_t index);
/// Adds a block behind its list's last node, or to an empty list where that is no_node.
uint32_t bud_list_append(struct bud &bud, block_kind kind, uint32_t size, uint32_t index, uint32_t &last);
void empty_list(struct bud &bud, block_kind kind, uint32_t size);

uint32_t take_from_lists(struct bud &bud, uint32_t size, uint32_t larger);
uint32_t free_in_lists(struct bud &bud, uint32_t size, uint32_t index);

void bud_release_top(struct bud &bud);

} // namespace ribkit::mem
