// A module: its FIB, and what it is beside that.
#pragma once

#include "fib/state.h"
#include "model/fib.h"

#include <cstdint>

namespace ribkit::fib {

struct module {
    explicit module(const fib_sizes &sizes, model::module_node is) : fib(sizes), self(std::move(is)) {}

    state fib;
    model::module_node self; ///< but what the FIB knows itself

    /// What it tells the RIB now.
    [[nodiscard]] model::module_node describe() const;
};

} // namespace ribkit::fib
