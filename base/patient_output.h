// Output that nobody waits for: what is printed is taken at once, and goes on as fast as somebody reads it.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <thread>

namespace ribkit::base {

/// Writes as much of the text as the descriptor takes while it takes anything within `patience`. What is written to an
/// output that is gone counts as taken. @return bytes taken
size_t write_patiently(int descriptor, std::string_view text, std::chrono::milliseconds patience);

/// For this thread, a reader that is gone is an error of the write and not this process's end.
void ignore_gone_readers();

/// While it lives, what this process prints on a descriptor never waits. Lines beyond a mebibyte that nobody reads are
/// lost; a line in their place says how many.
class patient_output {
  public:
    /// Throws std::system_error.
    explicit patient_output(int descriptor);
    patient_output(const patient_output &) = delete;
    patient_output &operator=(const patient_output &) = delete;
    ~patient_output();

  private:
    void carry() const;

    int descriptor_;
    int real_ = -1; ///< where the descriptor leads otherwise
    int from_ = -1; ///< where it leads now, at the other end
    std::thread carrying_;
};

} // namespace ribkit::base
