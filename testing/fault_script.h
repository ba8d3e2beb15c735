// A fault script in force while an object lives, for tests.
#pragma once

#include "ribkit_platform.h"
#include "testing/temporary_directory.h"

#include <array>
#include <gtest/gtest.h>
#include <string_view>

namespace ribkit::testing {

class fault_script {
  public:
    explicit fault_script(std::string_view text) : file_(text) {
        std::array<char, 512> error{};
        EXPECT_EQ(qip_faults_load(file_.path().c_str(), error.data(), error.size()), 0) << error.data();
    }
    fault_script(const fault_script &) = delete;
    fault_script &operator=(const fault_script &) = delete;
    ~fault_script() { qip_faults_load(nullptr, nullptr, 0); }

  private:
    input_file file_;
};

} // namespace ribkit::testing
