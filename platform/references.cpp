// Slots live in blocks that never move and are never freed, so that reading a held message needs no lock.
#include "platform/references.h"

#include "platform/lasting.h"

#include <array>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace ribkit::platform {

namespace {

struct slot {
    std::atomic<uint32_t> generation{0}; // odd while it holds a message, so never that of a cleared reference
    message letter;

    uint32_t next_generation() { // by the slot's owner, or with the table's lock held
        const uint32_t next = generation.load(std::memory_order_relaxed) + 1;
        generation.store(next, std::memory_order_release);
        return next;
    }
};

class slot_table {
  public:
    uint32_t reserve() {
        const std::scoped_lock lock{mutex_};
        return free_slot();
    }

    void give_back(uint32_t index) {
        const std::scoped_lock lock{mutex_};
        free_.push_back(index);
    }

    // Without the lock: a reserved slot has one owner.
    void fill(uint32_t index, message letter, qip_ref &ref) {
        slot &taken = at(index);
        taken.letter = std::move(letter);
        ref = {{index, taken.next_generation()}};
        held_.fetch_add(1, std::memory_order_relaxed);
    }

    slot *find(const qip_ref &ref) {
        const uint32_t index = ref.word[0];
        if (index >= blocks_.size() * block_size) {
            return nullptr;
        }
        block *home = blocks_[index / block_size].load(std::memory_order_acquire);
        if (home == nullptr) {
            return nullptr;
        }
        slot &candidate = (*home)[index % block_size];
        const uint32_t generation = candidate.generation.load(std::memory_order_acquire);
        return generation == ref.word[1] && generation % 2 == 1 ? &candidate : nullptr;
    }

    bool drop(const qip_ref &ref) {
        message dropped; // ends without the lock
        const std::scoped_lock lock{mutex_};
        slot *found = find(ref);
        if (found == nullptr) {
            return false;
        }
        free_.push_back(ref.word[0]);
        found->next_generation();
        held_.fetch_sub(1, std::memory_order_relaxed);
        dropped = std::move(found->letter);
        return true;
    }

    [[nodiscard]] uint32_t held() const { return held_.load(std::memory_order_relaxed); }

  private:
    static constexpr uint32_t block_size = 1024;
    using block = std::array<slot, block_size>;

    slot &at(uint32_t index) {
        return (*blocks_[index / block_size].load(std::memory_order_relaxed))[index % block_size];
    }

    uint32_t free_slot() {
        if (free_.empty()) {
            add_block();
        }
        const uint32_t index = free_.back();
        free_.pop_back();
        return index;
    }

    void add_block() {
        if (used_blocks_ == blocks_.size()) {
            throw std::bad_alloc{};
        }
        free_.reserve(size_t{used_blocks_ + 1} * block_size); // so that giving back never allocates
        blocks_[used_blocks_].store(new block, std::memory_order_release);
        for (uint32_t index = block_size; index-- != 0;) {
            free_.push_back(used_blocks_ * block_size + index);
        }
        ++used_blocks_;
    }

    std::mutex mutex_;
    std::array<std::atomic<block *>, 4096> blocks_{};
    std::vector<uint32_t> free_;
    uint32_t used_blocks_ = 0;
    std::atomic<uint32_t> held_{0};
};

constinit lasting<slot_table> slots;

} // namespace

reserved_reference::reserved_reference() : index_(slots.it.reserve()) {}

reserved_reference::~reserved_reference() {
    if (index_ != none) {
        slots.it.give_back(index_);
    }
}

void reserved_reference::hold(message letter, qip_ref &ref) noexcept {
    slots.it.fill(std::exchange(index_, none), std::move(letter), ref);
}

message *held(const qip_ref *ref) {
    slot *found = ref == nullptr ? nullptr : slots.it.find(*ref);
    return found == nullptr ? nullptr : &found->letter;
}

bool release(const qip_ref *ref) { return ref != nullptr && slots.it.drop(*ref); }

uint32_t references_held() { return slots.it.held(); }

} // namespace ribkit::platform
