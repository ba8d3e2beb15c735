// Request tokens: counted upwards, never 0, and none twice while an answer with it may still come.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_set>

namespace ribkit::platform {

class token_source {
  public:
    uint32_t take() {
        const std::scoped_lock lock{mutex_};
        while (next_ == 0 || !in_use_.insert(next_).second) {
            ++next_;
        }
        return next_++;
    }

    void continue_at(uint32_t token) {
        const std::scoped_lock lock{mutex_};
        next_ = token;
    }

    void give_back(uint32_t token) {
        const std::scoped_lock lock{mutex_};
        in_use_.erase(token);
    }

  private:
    std::mutex mutex_;
    std::unordered_set<uint32_t> in_use_;
    uint32_t next_ = 1;
};

/// A token for as long as it lives.
class token_holder {
  public:
    explicit token_holder(std::shared_ptr<token_source> source) : source_(std::move(source)), token_(source_->take()) {}
    token_holder(const token_holder &) = delete;
    token_holder &operator=(const token_holder &) = delete;
    ~token_holder() { source_->give_back(token_); }

    [[nodiscard]] uint32_t value() const { return token_; }

  private:
    std::shared_ptr<token_source> source_;
    uint32_t token_;
};

} // namespace ribkit::platform
