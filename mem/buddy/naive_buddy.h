// The buddy allocator as one would write it from its description: 32 sorted lists. The tests' model and the benchmarks'
// peer; shares nothing with the library.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace ribkit::mem::naive {

struct buddy {
    struct node {
        uint32_t index;
        node *next;
    };

    uint32_t total;
    uint32_t free_space;
    uint32_t carve_mark = 0;
    node *free_lists[17] = {};
    node *used_lists[17] = {};

    explicit buddy(uint32_t units) : total(units), free_space(units) {}
    buddy(const buddy &) = delete;
    buddy &operator=(const buddy &) = delete;
    ~buddy() {
        for (uint32_t size = 1; size <= 16; size++) {
            drop(&free_lists[size]);
            drop(&used_lists[size]);
        }
    }

    uint32_t alloc(uint32_t size, uint32_t *index) {
        if (size == 0 || size > 16) {
            return 0x40520001;
        }
        *index = 0xdeadbeef;
        for (uint32_t s = size; s <= 16; s++) {
            if (free_lists[s] != nullptr) {
                node *taken = free_lists[s];
                free_lists[s] = taken->next;
                *index = taken->index;
                insert(&used_lists[size], taken);
                if (s > size) {
                    add(&free_lists[s - size], *index + size);
                }
                return 0;
            }
        }
        if (carve_mark > total) {
            return 0x4052000c;
        }
        if (total - carve_mark < 16) {
            return 0x4052000b;
        }
        *index = carve_mark;
        carve_mark += 16;
        free_space -= 16;
        add(&used_lists[size], *index);
        if (size != 16) {
            add(&free_lists[16 - size], *index + size);
        }
        return 0;
    }

    uint32_t free(uint32_t size, uint32_t index) {
        if (size == 0 || size > 16 || index >= carve_mark) {
            return 0x40520001;
        }
        if (size == 16) {
            const uint32_t result = used_to_free(16, 16, index);
            release_top();
            return result;
        }
        const uint32_t base = index & ~15U;
        node *left = nullptr;
        node *right = nullptr;
        uint32_t left_size = 0;
        uint32_t right_size = 0;
        for (uint32_t s = 16 - size; s >= 1; s--) {
            for (node *n = free_lists[s]; n != nullptr && (left == nullptr || right == nullptr); n = n->next) {
                if (left_size + size + right_size + s > 16) {
                    break;
                }
                if (n->index < base || n->index > base + 15) {
                    continue;
                }
                if (left == nullptr && n->index + s == index) {
                    left = n;
                    left_size = s;
                } else if (right == nullptr && n->index == index + size) {
                    right = n;
                    right_size = s;
                }
            }
        }
        const uint32_t merged = left_size + size + right_size;
        uint32_t result = 0;
        if (left != nullptr) {
            unlink(&free_lists[left_size], left);
            insert(&free_lists[merged], left);
            if (right != nullptr) {
                unlink(&free_lists[right_size], right);
                std::free(right);
            }
            result = del_index(&used_lists[size], index);
        } else {
            result = used_to_free(size, merged, index);
            if (right != nullptr) {
                unlink(&free_lists[right_size], right);
                std::free(right);
            }
        }
        if (merged == 16) {
            release_top();
        }
        return result;
    }

    void from_table(const uint32_t *table) {
        uint32_t end = total;
        while (end > 0 && table[end - 1] == 0xdeadbeef) {
            end--;
        }
        end = (end + 15) / 16 * 16;
        carve_mark = end < total ? end : total;
        free_space = total - carve_mark;
        for (uint32_t i = 0; i < carve_mark;) {
            uint32_t length = 1;
            while (i + length < carve_mark && (i + length) % 16 != 0 && table[i + length] == table[i]) {
                length++;
            }
            add(table[i] == 0xdeadbeef ? &free_lists[length] : &used_lists[length], i);
            i += length;
        }
    }

    // The image as words; the benchmark's peer fills an exact buffer as the library does.
    [[nodiscard]] uint32_t image_words() const {
        uint32_t words = 35;
        for (uint32_t s = 1; s <= 16; s++) {
            words += count(free_lists[s]) + count(used_lists[s]);
        }
        return words;
    }

    void save(uint32_t *out) const {
        *out++ = total;
        *out++ = free_space;
        *out++ = carve_mark;
        for (const auto &lists : {free_lists, used_lists}) {
            for (uint32_t s = 1; s <= 16; s++) {
                *out++ = count(lists[s]);
            }
        }
        for (const auto &lists : {free_lists, used_lists}) {
            for (uint32_t s = 1; s <= 16; s++) {
                for (const node *n = lists[s]; n != nullptr; n = n->next) {
                    *out++ = n->index;
                }
            }
        }
    }

    void restore(const uint32_t *image) {
        total = image[0];
        free_space = image[1];
        carve_mark = image[2];
        const uint32_t *next = image + 35;
        for (uint32_t list = 0; list < 32; list++) {
            node **link = list < 16 ? &free_lists[list + 1] : &used_lists[list - 15];
            drop(link);
            for (uint32_t i = 0; i < image[3 + list]; i++) {
                *link = made(*next++);
                link = &(*link)->next;
            }
        }
    }

    [[nodiscard]] static uint32_t count(const node *list) {
        uint32_t nodes = 0;
        for (; list != nullptr; list = list->next) {
            nodes++;
        }
        return nodes;
    }

  private:
    static node *made(uint32_t index) {
        auto *n = static_cast<node *>(std::malloc(sizeof(node)));
        n->index = index;
        n->next = nullptr;
        return n;
    }

    static void drop(node **list) {
        while (*list != nullptr) {
            node *gone = *list;
            *list = gone->next;
            std::free(gone);
        }
    }

    static void insert(node **link, node *n) {
        while (*link != nullptr && (*link)->index <= n->index) {
            link = &(*link)->next;
        }
        n->next = *link;
        *link = n;
    }

    static void add(node **list, uint32_t index) { insert(list, made(index)); }

    static void unlink(node **link, const node *n) {
        while (*link != n) {
            link = &(*link)->next;
        }
        *link = n->next;
    }

    static uint32_t del_index(node **link, uint32_t index) {
        while (*link != nullptr && (*link)->index != index) {
            link = &(*link)->next;
        }
        if (*link == nullptr) {
            return 0x4052000d;
        }
        node *gone = *link;
        *link = gone->next;
        std::free(gone);
        return 0;
    }

    uint32_t used_to_free(uint32_t used, uint32_t free_size, uint32_t index) {
        node **link = &used_lists[used];
        while (*link != nullptr && (*link)->index != index) {
            link = &(*link)->next;
        }
        if (*link == nullptr) {
            return 0x4052000d;
        }
        node *moved = *link;
        *link = moved->next;
        insert(&free_lists[free_size], moved);
        return 0;
    }

    void release_top() {
        while (free_space != total && del_index(&free_lists[16], carve_mark - 16) == 0) {
            free_space += 16;
            carve_mark -= 16;
        }
    }
};

} // namespace ribkit::mem::naive
