// Lists of objects that lie elsewhere, most of them on the stack of a thread that waits. To join and to leave needs no
// memory, so it cannot fail, and an object that ends has left: nothing is ever found of one that is gone.
#pragma once

namespace ribkit::platform {

template <typename Object> class ring;

/// A base of what can stand in a ring. It is guarded by whatever guards the ring, its end included.
class ring_place {
  public:
    ring_place() = default;
    ring_place(const ring_place &) = delete;
    ring_place &operator=(const ring_place &) = delete;
    ~ring_place() { leave(); }

    [[nodiscard]] bool joined() const { return after_ != this; }

    void leave() {
        before_->after_ = after_;
        after_->before_ = before_;
        before_ = after_ = this;
    }

  private:
    template <typename Object> friend class ring;

    void join_before(ring_place &next) {
        leave();
        before_ = next.before_;
        after_ = &next;
        before_->after_ = after_->before_ = this;
    }

    ring_place *before_ = this;
    ring_place *after_ = this;
};

template <typename Object> class ring {
  public:
    [[nodiscard]] bool empty() const { return !head_.joined(); }
    [[nodiscard]] Object &front() const { return object_at(head_.after_); }

    void push_back(Object &one) { one.join_before(head_); }

    /// Behind the last one that does not come later.
    template <typename Later> void push_in_order(Object &one, const Later &later) {
        ring_place *next = &head_;
        while (next->before_ != &head_ && later(object_at(next->before_), one)) {
            next = next->before_;
        }
        one.join_before(*next);
    }

    /// The first that the condition holds for; null without one.
    template <typename Condition> Object *find(const Condition &holds) const {
        for (ring_place *one = head_.after_; one != &head_; one = one->after_) {
            if (holds(object_at(one))) {
                return &object_at(one);
            }
        }
        return nullptr;
    }

    /// The action may take the object that it is given out of the ring, and no other.
    template <typename Action> void for_each(const Action &action) {
        for (ring_place *one = head_.after_; one != &head_;) {
            ring_place *next = one->after_;
            action(object_at(one));
            one = next;
        }
    }

  private:
    static Object &object_at(ring_place *place) { return static_cast<Object &>(*place); }

    ring_place head_;
};

} // namespace ribkit::platform
