// Nodes of all lists come from one array that grows; what is given back is used again first.
#include "mem/buddy/buddy_lists.h"

#include "mem/buddy/buddy_chunks.h"
#include "rib_codes.h"
#include <algorithm>
#include <cstdlib>

namespace ribkit::mem {

namespace {

uint32_t obtain_node(bud_lists &lists, uint32_t index) {
    uint32_t node = lists.unused;
    if (node != no_node) {
        lists.unused = lists.node[node].next;
    } else if (lists.fresh < lists.capacity || reserve_nodes(lists, uint64_t{2} * lists.capacity + chunk_units)) {
        node = lists.fresh++;
    } else {
        return no_node;
    }
    lists.node[node] = {index, no_node};
    return node;
}

void give_back_node(bud_lists &lists, uint32_t node) {
    lists.node[node].next = lists.unused;
    lists.unused = node;
}

// The first node of a list for which `wanted` holds, unlinked; no_node where there is none.
template <typename Wanted> uint32_t unlink(struct bud &bud, block_kind kind, uint32_t size, Wanted wanted) {
    uint32_t *link = &bud.lists.head[kind][size - 1];
    while (*link != no_node && !wanted(*link)) {
        link = &bud.lists.node[*link].next;
    }
    const uint32_t found = *link;
    if (found != no_node) {
        *link = bud.lists.node[found].next;
        count_block(bud, kind, size, ~0U);
    }
    return found;
}

uint32_t unlink_index(struct bud &bud, block_kind kind, uint32_t size, uint32_t index) {
    return unlink(bud, kind, size, [&](uint32_t node) { return bud.lists.node[node].index == index; });
}

uint32_t unlink_node(struct bud &bud, block_kind kind, uint32_t size, uint32_t which) {
    return unlink(bud, kind, size, [&](uint32_t node) { return node == which; });
}

uint32_t give_back_found(struct bud &bud, uint32_t node) {
    if (node == no_node) {
        return RIB_FAILED;
    }
    give_back_node(bud.lists, node);
    return RIB_OK;
}

uint32_t bud_list_del_index(struct bud &bud, block_kind kind, uint32_t size, uint32_t index) {
    return give_back_found(bud, unlink_index(bud, kind, size, index));
}

uint32_t bud_list_del_node(struct bud &bud, block_kind kind, uint32_t size, uint32_t node) {
    return give_back_found(bud, unlink_node(bud, kind, size, node));
}

uint32_t bud_used_to_free(struct bud &bud, uint32_t used_size, uint32_t free_size, uint32_t index) {
    const uint32_t node = unlink_index(bud, used_block, used_size, index);
    if (node == no_node) {
        return RIB_FAILED;
    }
    bud_list_insert(bud, free_block, free_size, node);
    return RIB_OK;
}

struct neighbours {
    uint32_t left = no_node;
    uint32_t left_size = 0;
    uint32_t right = no_node;
    uint32_t right_size = 0;
};

// From the largest free blocks that the chunk can still hold down; the first that fits on a side is that side's.
neighbours find_neighbours(const struct bud &bud, uint32_t size, uint32_t index) {
    neighbours found;
    const uint32_t base = index - index % chunk_units;
    uint32_t room = chunk_units - size;
    for (uint32_t length = room; length >= 1; length--) {
        uint32_t node = bud.lists.head[free_block][length - 1];
        for (; node != no_node && length <= room; node = bud.lists.node[node].next) {
            const uint32_t at = bud.lists.node[node].index;
            if (at - base >= chunk_units) {
                continue;
            }
            if (found.left == no_node && at + length == index) {
                found.left = node;
                found.left_size = length;
                room -= length;
            } else if (found.right == no_node && at == index + size) {
                found.right = node;
                found.right_size = length;
                room -= length;
            }
            if (found.left != no_node && found.right != no_node) {
                return found;
            }
        }
    }
    return found;
}

uint32_t merge(struct bud &bud, uint32_t size, uint32_t index, const neighbours &found) {
    const uint32_t merged = found.left_size + size + found.right_size;
    uint32_t result = RIB_OK;
    if (found.left != no_node) {
        bud_list_insert(bud, free_block, merged, unlink_node(bud, free_block, found.left_size, found.left));
    } else {
        result = bud_used_to_free(bud, size, merged, index);
    }
    if (found.right != no_node) {
        result |= bud_list_del_node(bud, free_block, found.right_size, found.right);
    }
    if (found.left != no_node) {
        result |= bud_list_del_index(bud, used_block, size, index);
    }
    return result;
}

void push(struct bud &bud, block_kind kind, uint32_t size, uint32_t index) {
    uint32_t &head = bud.lists.head[kind][size - 1];
    const uint32_t node = obtain_node(bud.lists, index);
    bud.lists.node[node].next = head;
    head = node;
}

} // namespace

void clear_lists(bud_lists &lists) {
    lists.fresh = 0;
    lists.unused = no_node;
    std::fill_n(&lists.head[0][0], size_t{block_kinds} * bud_sizes, no_node);
}

bool reserve_nodes(bud_lists &lists, uint64_t count) {
    if (count <= lists.capacity) {
        return true;
    }
    if (count >= no_node || count * sizeof(bud_node) > SIZE_MAX) {
        return false;
    }
    auto *larger = static_cast<bud_node *>(std::malloc(static_cast<size_t>(count) * sizeof(bud_node)));
    if (larger == nullptr) {
        return false;
    }
    std::copy_n(lists.node, lists.fresh, larger);
    std::free(lists.node);
    lists.node = larger;
    lists.capacity = static_cast<uint32_t>(count);
    return true;
}

void walk_from_now_on(struct bud &bud) {
    if (bud.walked) {
        return;
    }
    clear_lists(bud.lists);
    for (uint32_t number = chunks_below(bud.carve_mark); number-- > 0;) {
        const bud_chunk chunk = bud.chunks.chunk[number];
        for (uint32_t starts = listed_starts(bud, number); starts != 0;) {
            const uint32_t unit = 31 - static_cast<uint32_t>(std::countl_zero(starts));
            starts &= ~(1U << unit);
            push(bud, is_free(chunk, unit) ? free_block : used_block, block_size(chunk, unit),
                 number * chunk_units + unit);
        }
    }
    give_back(bud.chunks);
    bud.walked = true;
}

void bud_list_insert(struct bud &bud, block_kind kind, uint32_t size, uint32_t node) {
    bud_node *nodes = bud.lists.node;
    uint32_t *link = &bud.lists.head[kind][size - 1];
    while (*link != no_node && nodes[*link].index <= nodes[node].index) {
        link = &nodes[*link].next;
    }
    nodes[node].next = *link;
    *link = node;
    count_block(bud, kind, size, 1);
}

uint32_t bud_list_add(struct bud &bud, block_kind kind, uint32_t size, uint32_t index) {
    const uint32_t node = obtain_node(bud.lists, index);
    if (node == no_node) {
        return RIB_OUT_OF_MEMORY;
    }
    bud_list_insert(bud, kind, size, node);
    return RIB_OK;
}

uint32_t bud_list_append(struct bud &bud, block_kind kind, uint32_t size, uint32_t index, uint32_t &last) {
    const uint32_t node = obtain_node(bud.lists, index);
    if (node == no_node) {
        return RIB_OUT_OF_MEMORY;
    }
    (last == no_node ? bud.lists.head[kind][size - 1] : bud.lists.node[last].next) = node;
    last = node;
    count_block(bud, kind, size, 1);
    return RIB_OK;
}

void empty_list(struct bud &bud, block_kind kind, uint32_t size) {
    uint32_t &head = bud.lists.head[kind][size - 1];
    while (head != no_node) {
        const uint32_t node = head;
        head = bud.lists.node[node].next;
        give_back_node(bud.lists, node);
        count_block(bud, kind, size, ~0U);
    }
}

uint32_t take_from_lists(struct bud &bud, uint32_t size, uint32_t larger) {
    const uint32_t node = unlink(bud, free_block, size + larger, [](uint32_t) { return true; });
    const uint32_t index = bud.lists.node[node].index;
    bud_list_insert(bud, used_block, size, node);
    if (larger != 0) {
        bud_list_add(bud, free_block, larger, index + size); // the rest is lost where memory fails
    }
    return index;
}

uint32_t free_in_lists(struct bud &bud, uint32_t size, uint32_t index) {
    const neighbours found = size < chunk_units ? find_neighbours(bud, size, index) : neighbours{};
    const uint32_t result = merge(bud, size, index, found);
    if (found.left_size + size + found.right_size == chunk_units) {
        bud_release_top(bud);
    }
    return result;
}

void bud_release_top(struct bud &bud) {
    while (bud.free_space != bud.total &&
           bud_list_del_index(bud, free_block, chunk_units, bud.carve_mark - chunk_units) == RIB_OK) {
        bud.free_space += chunk_units;
        bud.carve_mark -= chunk_units;
    }
}

} // namespace ribkit::mem
