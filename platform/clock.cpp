// The virtual clock is a baton: who holds it runs. It goes to the threads in the order in which their waits ended, and
// when there is none, to whoever the time reaches first.
#include "platform/clock.h"

#include <atomic>
#include <deque>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

namespace ribkit::platform {

using real_clock = std::chrono::steady_clock;

static std::atomic<bool> is_virtual{false};

struct thread_turn {
    pid_t thread = gettid();

    thread_turn() = default;
    thread_turn(const thread_turn &) = delete;
    thread_turn &operator=(const thread_turn &) = delete;
    ~thread_turn();
};

// By the letter behind the name in "1234 (name) S ..."; a thread that has ended sleeps, too.
static bool sleeps(pid_t thread) {
    std::ifstream stream{"/proc/self/task/" + std::to_string(thread) + "/stat"};
    std::string text;
    std::getline(stream, text);
    const size_t name_end = text.rfind(')');
    return name_end == std::string::npos || text.compare(name_end, 3, ") S") == 0;
}

struct virtual_clock {
    // A thread that holds the baton and sleeps somewhere else than in the service must not stop the others for ever: it
    // loses it after so many looks at it. One that wants to run, but is not let by a busy machine, keeps it: a run has
    // to go the same way there.
    static constexpr std::chrono::milliseconds look_around{50};
    static constexpr uint32_t most_looks = 5;

    struct occasion { // a wait that ends by its deadline, or an action
        timed_wait *wait;
        std::function<void()> action;
    };

    std::mutex lock;
    std::condition_variable handed_over;
    std::map<std::pair<time_point, uint64_t>, occasion> ahead; // by deadline, then in the order of their beginning
    std::deque<thread_turn *> ready;
    thread_turn *holder = nullptr;
    time_point now{};
    uint64_t moves = 0;
    uint64_t numbers = 0;
    uint32_t claims_on_real_time = 0;

    void add(time_point when, occasion what, uint64_t &number) {
        number = ++numbers;
        ahead.emplace(std::pair{when, number}, std::move(what));
    }

    void stop(timed_wait &wait) {
        ahead.erase({wait.deadline_, wait.number_});
        if (is_virtual) {
            ready.push_back(wait.thread_);
        }
        wait.thread_ = nullptr;
    }

    // With nobody at work: the next in turn takes the baton, after a jump of the time where none is ready.
    void hand_over(std::unique_lock<std::mutex> &locked, thread_turn *self) {
        while (holder == nullptr && (!ready.empty() || (!ahead.empty() && ahead.begin()->first.first != never))) {
            if (ready.empty()) {
                jump(locked, self);
                continue;
            }
            holder = ready.front();
            ready.pop_front();
            ++moves;
            handed_over.notify_all();
        }
    }

    void jump(std::unique_lock<std::mutex> &locked, thread_turn *self) {
        const auto next = ahead.begin();
        now = next->first.first;
        if (next->second.wait != nullptr) {
            stop(*next->second.wait);
            return;
        }
        const auto due = ahead.extract(next);
        holder = self;
        locked.unlock();
        due.mapped().action();
        locked.lock();
        holder = nullptr;
    }

    void await_turn(std::unique_lock<std::mutex> &locked, thread_turn *self);
    void leave(thread_turn *self) {
        std::unique_lock locked{lock};
        std::erase(ready, self);
        if (holder == self) {
            holder = nullptr;
            hand_over(locked, self);
        }
    }
};

namespace {

// Never destroyed: threads may still wait when the process ends.
virtual_clock &virtual_time() {
    static auto &clock = *new virtual_clock;
    return clock;
}

thread_local thread_turn own_turn;

class real_delays {
  public:
    void add(std::chrono::milliseconds delay, std::function<void()> action) {
        const std::scoped_lock lock{mutex_};
        waiting_.emplace(real_clock::now() + delay, std::move(action)); // those due at one time keep their order
        if (!started_) {
            started_ = true;
            std::thread{[this] { run(); }}.detach();
        }
        changed_.notify_one();
    }

  private:
    void run() {
        std::unique_lock locked{mutex_};
        for (;;) {
            if (waiting_.empty()) {
                changed_.wait(locked);
            } else if (const time_point due = waiting_.begin()->first; real_clock::now() < due) {
                changed_.wait_until(locked, due);
            } else {
                const auto first = waiting_.extract(waiting_.begin());
                locked.unlock();
                first.mapped()();
                locked.lock();
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::multimap<time_point, std::function<void()>> waiting_;
    bool started_ = false;
};

// Never destroyed: its thread lasts as long as the process.
real_delays &delays() {
    static auto &real = *new real_delays;
    return real;
}

} // namespace

thread_turn::~thread_turn() { virtual_time().leave(this); }

void virtual_clock::await_turn(std::unique_lock<std::mutex> &locked, thread_turn *self) {
    uint32_t looks = 0;
    for (uint64_t seen = moves; is_virtual && holder != self; seen = moves) {
        hand_over(locked, self);
        if (holder == self) {
            break;
        }
        handed_over.wait_for(locked, look_around);
        looks = holder != nullptr && seen == moves && sleeps(holder->thread) ? looks + 1 : 0;
        if (looks == most_looks) {
            holder = nullptr;
        }
    }
    ++moves;
}

time_point clock_now() {
    if (!is_virtual.load(std::memory_order_relaxed)) {
        return real_clock::now();
    }
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    return clock.now;
}

bool set_virtual_clock(bool on) {
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    if (on && clock.claims_on_real_time != 0) {
        return false;
    }
    is_virtual = on;
    clock.now = {};
    clock.holder = nullptr;
    clock.ready.clear();
    std::erase_if(clock.ahead, [](const auto &one) { return one.second.wait == nullptr; });
    clock.handed_over.notify_all();
    return true;
}

bool claim_real_time() {
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    clock.claims_on_real_time += is_virtual ? 0 : 1;
    return !is_virtual;
}

void release_real_time() {
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    --clock.claims_on_real_time;
}

void take_turn() {
    if (!is_virtual.load(std::memory_order_relaxed)) {
        return;
    }
    virtual_clock &clock = virtual_time();
    std::unique_lock locked{clock.lock};
    if (clock.holder != &own_turn) {
        clock.ready.push_back(&own_turn);
    }
    clock.await_turn(locked, &own_turn);
}

void step_aside() {
    if (is_virtual.load(std::memory_order_relaxed)) {
        virtual_time().leave(&own_turn);
    }
}

void do_later(std::chrono::milliseconds delay, std::function<void()> action) {
    if (!is_virtual.load(std::memory_order_relaxed)) {
        delays().add(delay, std::move(action));
        return;
    }
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    uint64_t number = 0;
    clock.add(clock.now + delay, {nullptr, std::move(action)}, number);
}

bool timed_wait::begin(time_point deadline) {
    counted_ = is_virtual.load(std::memory_order_relaxed);
    if (!counted_) {
        return false;
    }
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    thread_ = &own_turn;
    deadline_ = deadline;
    clock.add(deadline, {this, nullptr}, number_);
    return true;
}

void timed_wait::end() {
    if (!counted_) {
        return;
    }
    virtual_clock &clock = virtual_time();
    const std::scoped_lock lock{clock.lock};
    if (thread_ != nullptr) {
        clock.stop(*this);
    }
}

void timed_wait::block() {
    virtual_clock &clock = virtual_time();
    std::unique_lock locked{clock.lock};
    if (clock.holder == &own_turn) {
        clock.holder = nullptr;
    }
    clock.await_turn(locked, &own_turn);
}

} // namespace ribkit::platform
