// How long one waits in all: for a server, for a RIB, for its answers, and between attempts. Work does not count, only
// waiting does, on the clock that the message service waits by. A run under a virtual clock tells the same every time.
#pragma once

#include <chrono>
#include <optional>

namespace ribkit::bus {

/// The time that the message service waits by.
std::chrono::steady_clock::time_point run_now();

class patience {
  public:
    using milliseconds = std::chrono::milliseconds;

    /// A patience of 0 waits for nobody, but leaves who is there a second for each answer.
    explicit patience(milliseconds allowed) : allowed_(allowed), left_(allowed) {}

    /// All of it again, since what was waited for has come.
    void renew() { *this = patience(allowed_); }

    [[nodiscard]] milliseconds left() const { return std::chrono::floor<milliseconds>(left_); }

    /// Whole seconds, rounded up, for people.
    [[nodiscard]] std::chrono::seconds seconds_left() const { return std::chrono::ceil<std::chrono::seconds>(left_); }

    /// How long an answer may be waited for.
    [[nodiscard]] milliseconds for_answer() const { return allowed_.count() == 0 ? milliseconds(1000) : left(); }

    /// The pause before the next attempt, which counts as waited; none where nothing is left. Pauses double, and leave
    /// some of the time to the attempt behind them.
    std::optional<milliseconds> next_pause();

    /// Counts what passes while it lives as waited.
    class waiting {
      public:
        explicit waiting(patience &on) : on_(on), start_(now()) {}
        waiting(const waiting &) = delete;
        waiting &operator=(const waiting &) = delete;
        ~waiting() { on_.left_ -= now() - start_; }

      private:
        patience &on_;
        std::chrono::microseconds start_;
    };

  private:
    static std::chrono::microseconds now();

    milliseconds allowed_;
    std::chrono::microseconds left_;
    milliseconds pause_{50};
};

} // namespace ribkit::bus
