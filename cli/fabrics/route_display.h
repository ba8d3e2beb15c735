// The RIB's routes on standard output, as the switch displays them.
#pragma once

#include "model/routes.h"
#include "rib/service/rib_service.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ribkit::cli {

/// Which routes are displayed.
class table_choice {
  public:
    /// @param text "auto" (all where there are few), "all", "none", or the number of a VSAN; throws an input_error
    explicit table_choice(const std::string &text);

    /// The one VSAN that is displayed, if any.
    [[nodiscard]] std::optional<uint32_t> vsan() const { return vsan_; }

    /// Whether what is of this VSAN is displayed.
    /// @param routes how many there are in all
    [[nodiscard]] bool shows(uint32_t vsan, size_t routes) const;

    /// The routes of a RIB that has stopped, and on request what its tables are made of.
    void display(const rib::rib_service &stopped, bool memory) const;

  private:
    void display(const rib::state &tables) const;
    template <class Kind, class Show> void display(const rib::state &tables, size_t routes, const Show &show) const;

    std::string text_;
    std::optional<uint32_t> vsan_;
};

} // namespace ribkit::cli
