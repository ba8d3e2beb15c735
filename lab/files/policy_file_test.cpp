// Policies as they are written, and what is refused in them.
#include "base/input_error.h"
#include "lab/files/fabric_file.h"
#include "rib_codes.h"

#include <gtest/gtest.h>

namespace ribkit::lab {
namespace {

std::string mistake(const std::string &text) {
    try {
        parse_policy(text, "p.toml");
    } catch (const base::input_error &error) {
        return error.what();
    }
    return "";
}

TEST(policy_file, clients_are_named_or_numbered) {
    const rib::rib_policy policy =
        parse_policy("[[quota]]\nclient = \"fspf\"\nroutes = 1000\n"
                     "[[quota]]\nclient = 0x1234\nroutes = 0\n"
                     "[[who]]\nname = \"fspf-1\"\nclients = [\"fspf\", \"Port Manager\", 66]\n"
                     "[[who]]\nname = \"a_guest\"\nclients = []\n",
                     "p.toml");
    EXPECT_EQ(policy.quotas, (std::map<uint32_t, uint32_t>{{RIB_CLIENT_FSPF, 1000}, {0x1234, 0}}));
    EXPECT_TRUE(policy.allows("fspf-1", RIB_CLIENT_FSPF));
    EXPECT_TRUE(policy.allows("fspf-1", RIB_CLIENT_PORT_MANAGER));
    EXPECT_TRUE(policy.allows("fspf-1", RIB_CLIENT_OPERATOR));
    EXPECT_FALSE(policy.allows("fspf-1", RIB_CLIENT_MCAST));
    EXPECT_FALSE(policy.allows("a_guest", RIB_CLIENT_FSPF));
    EXPECT_FALSE(policy.allows("fspf-2", RIB_CLIENT_FSPF));
    EXPECT_FALSE(policy.allows("", RIB_CLIENT_FSPF));
}

TEST(policy_file, without_who_nobody_is_bound) {
    EXPECT_TRUE(parse_policy("", "p.toml").allows("anybody", 77));
    EXPECT_TRUE(parse_policy("[[quota]]\nclient = 1\nroutes = 1\n", "p.toml").allows("", 77));
}

TEST(policy_file, mistakes_are_named_with_their_lines) {
    EXPECT_EQ(mistake("[[quota]]\nclient = \"fspg\"\nroutes = 1\n"),
              "p.toml:2: fspg: no client has this name; near: fspf; ribkit text rib_uuid names them all");
    EXPECT_EQ(mistake("[[quota]]\nclient = 1.5\nroutes = 1\n"),
              "p.toml:2: client takes a whole number from 0 to 4294967295");
    EXPECT_EQ(mistake("[[quota]]\nclient = 1\n"), "p.toml:1: [[quota]] needs a key \"routes\"");
    EXPECT_EQ(mistake("[[quota]]\nclient = 12\nroutes = 1\n[[quota]]\nclient = \"fspf\"\nroutes = 1\n"),
              "p.toml:5: client 12 has a quota already");
    EXPECT_EQ(mistake("[[who]]\nname = \"a b\"\nclients = []\n"),
              "p.toml:2: \"a b\" is no NAME of a sender: letters, digits, '-' and '_' make one");
    EXPECT_EQ(mistake("[[who]]\nname = \"\"\nclients = []\n"),
              "p.toml:2: \"\" is no NAME of a sender: letters, digits, '-' and '_' make one");
    EXPECT_EQ(mistake("[[who]]\nname = \"a\"\nclients = []\n[[who]]\nname = \"a\"\nclients = []\n"),
              "p.toml:5: \"a\" is already there");
    EXPECT_EQ(mistake("[[who]]\nname = \"a\"\nclients = [\n\"fspf\",\n\"fcmp\"]\n"),
              "p.toml:3: fcmp: no client has this name; near: fcmpls, fcs; ribkit text rib_uuid names them all");
    EXPECT_EQ(mistake("[[vsan]]\nid = 1\n"), "p.toml:1: unknown key \"vsan\" in the file, which knows quota, who");
}

TEST(policy_file, a_fabric_file_has_the_same_tables) {
    const fabric f = parse_fabric("local = \"a\"\n[[vsan]]\nid = 1\n[[switch]]\nname = \"a\"\ndomain = 1\n"
                                  "[[quota]]\nclient = \"mcast\"\nroutes = 7\n",
                                  "f.toml");
    EXPECT_EQ(f.policy.quotas, (std::map<uint32_t, uint32_t>{{RIB_CLIENT_MCAST, 7}}));
}

} // namespace
} // namespace ribkit::lab
