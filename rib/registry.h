// Who has registered with the RIB, under which name and at which route distance. A registration is repeated; one that
// is not heard of any more is forgotten. There is no clock here: the time in seconds is an argument.
#pragma once

#include "model/system.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ribkit::rib {

/// A client repeats its registration so often, in seconds.
inline constexpr uint32_t registration_repeated = 10;
/// ... and is forgotten when nothing was heard of it for so long, in seconds.
inline constexpr uint32_t registration_lasts = 30;

/// A list of them is one message.
inline constexpr size_t most_registrations = 512;

/// Longer names are cut when they are listed.
inline constexpr size_t longest_client_name = 7;

using model::registration;

class registry {
  public:
    /// Takes a registration, or its repetition, which may say something else. Characters that cannot be printed become
    /// question marks. Throws std::bad_alloc, and nothing has changed then.
    /// @param now seconds
    /// @return 0; RIB_HW_FULL where there are too many
    uint32_t take(const registration &said, uint64_t now);

    /// Forgets a client of which nothing was heard for too long.
    /// @param now seconds
    /// @return who it was; none where all were heard of. To be called until then
    std::optional<registration> forget_one(uint64_t now);

    /// Null where it is not registered.
    [[nodiscard]] const registration *find(uint32_t client) const;
    [[nodiscard]] size_t size() const { return clients_.size(); }
    /// By identity.
    [[nodiscard]] std::vector<registration> all() const;

  private:
    struct entry {
        registration said;
        uint64_t heard = 0; ///< seconds
    };
    std::map<uint32_t, entry> clients_;
};

/// The line of history that tells that a client registered, or that it was forgotten.
std::string line_of_registration(const registration &said);
std::string line_of_loss(const registration &lost);

} // namespace ribkit::rib
