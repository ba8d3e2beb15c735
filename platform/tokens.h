// Request tokens: counted upwards, never 0, and none twice while an answer with it may still come.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

namespace ribkit::platform {

class token_holder;

/// Holders in use form a ring in the order in which they were made. Their tokens ascend (modulo 2^32) towards the next
/// one, so only the oldest can be in its way.
class token_source {
  public:
    void continue_at(uint32_t token) {
        const std::scoped_lock lock{mutex_};
        next_ = token;
    }

  private:
    friend class token_holder;

    struct link {
        link *older = this;
        link *newer = this;
        uint32_t token = 0;
    };

    void add(link &made);
    void remove(link &done);

    std::mutex mutex_;
    link ring_; // its newer one is the oldest in use
    uint32_t next_ = 1;
};

/// A token for as long as it lives.
class token_holder {
  public:
    explicit token_holder(std::shared_ptr<token_source> source) : source_(std::move(source)) { source_->add(link_); }
    token_holder(const token_holder &) = delete;
    token_holder &operator=(const token_holder &) = delete;
    ~token_holder() { source_->remove(link_); }

    [[nodiscard]] uint32_t value() const { return link_.token; }

  private:
    std::shared_ptr<token_source> source_;
    token_source::link link_;
};

inline void token_source::add(link &made) {
    const std::scoped_lock lock{mutex_};
    for (const link *oldest = ring_.newer; next_ == 0 || (oldest != &ring_ && oldest->token == next_); ++next_) {
        oldest = next_ == 0 ? oldest : oldest->newer;
    }
    made.token = next_++;
    made.older = ring_.older;
    made.newer = &ring_;
    made.older->newer = &made;
    ring_.older = &made;
}

inline void token_source::remove(link &done) {
    const std::scoped_lock lock{mutex_};
    done.older->newer = done.newer;
    done.newer->older = done.older;
}

} // namespace ribkit::platform
