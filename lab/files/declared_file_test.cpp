// What fabric files declare, and every mistake with its line.
#include "base/input_error.h"
#include "lab/files/fabric_file.h"
#include "lab/run_text.h"
#include "rib_codes.h"

#include <gtest/gtest.h>

namespace ribkit::lab {
namespace {

const std::string head = R"(local = "a"
[[vsan]]
id = 1
[[switch]]
name = "a"
domain = 1
[[switch]]
name = "b"
domain = 2
[[link]]
ends = ["a fc1/1", "b fc1/1"]
)"; // 11 lines

std::string mistake(const std::string &text) {
    try {
        parse_fabric(head + text, "f");
    } catch (const base::input_error &error) {
        return error.what();
    }
    return "none";
}

TEST(declared_file, a_static_route_is_filled_in_as_a_row_is) {
    const fabric f = parse_fabric(head + "[[static]]\nfcid = 0x020304\nvia = \"a fc1/1\"\n", "f");
    const auto &one = f.declared.statics().at(0);
    EXPECT_EQ(one.vsan, 1U);
    EXPECT_EQ(one.row.destination, 0x020000U);
    EXPECT_EQ(one.row.mask, RIB_MASK_DOMAIN);
    EXPECT_EQ(one.row.domain, 2U); // at the other end of the link
    EXPECT_EQ(one.row.cost, 10U);
    EXPECT_EQ(one.row.route_type, 1U);
    EXPECT_EQ(one.row.permanence, 1U);
}

TEST(declared_file, mistakes_are_named_with_their_lines) {
    const std::string via = "\nvia = \"a fc1/1\"\n";
    const std::pair<std::string, std::string> cases[] = {
        {"[[static]]\nfcid = 0xfffb01" + via,
         "f:12: 0xfffb01/0xffffff by domain 2 is no static route: FC IDs from 0x010000 to 0xefffff but those that end "
         "with ffff, masks 0xff0000, 0xffff00 and 0xffffff, and domains 1 to 239 make one"},
        {"[[static]]\nfcid = 0x020000\nvsan = 2" + via, "f:12: static route in VSAN 2, but there is no such VSAN"},
        {"[[static]]\nfcid = 0x020000\nvia = \"c fc1/1\"\n",
         "f:12: static route via \"c\", but there is no such switch"},
        {"[[static]]\nfcid = 0x020000" + via + "[[static]]\nfcid = 0x020100" + via,
         "f:15: 0x020000/0xff0000 has a static route already, on line 12"},
        {"[[static]]\nname = \"x\"\nfcid = 0x020000" + via + "[[static]]\nname = \"x\"\nfcid = 0x030000" + via,
         "f:16: static route \"x\" is already there, on line 12"},
        {"[[static]]\nfcid = 0x020000" + via + "[[event]]\nat = \"1s\"\nstatic = \"\"\nstate = \"down\"\n",
         "f:17: there is no static route \"\""},
        {"[[group]]\nfcid = 0xfffb00\nmembers = []\n[[group]]\nfcid = 0xfffb00\nmembers = []\n",
         "f:15: group 0xfffb00 is already there, on line 12"},
        {"[[group]]\nfcid = 0x020000\nmembers = []\n",
         "f:12: 0x020000 is no group: 0xfffb00 to 0xfffbff and 0xffffff are"},
        {"[[group]]\nfcid = 0xfffb00\nmembers = [\"a fc1/1\"]\n",
         "f:12: member \"a fc1/1\", but that interface has the link of line 10"},
        {"[[group]]\nfcid = 0xfffb00\nmembers = [\"a fc1/2\", \"a fc1/2\"]\n",
         "f:12: member \"a fc1/2\" is there twice"},
        {"[[label]]\ntunnel = [\"a fc1/2\"]\nlabel = 16\n",
         "f:13: a tunnel has two ends: [\"edge-1 fc1/9\", \"edge-3 fc1/9\"]"},
        {"[[label]]\ntunnel = [\"a fc1/2\", \"b fc1/2\"]\nlabel = 1048576\n",
         "f:12: label 1048576 is outside 0 to 1048575"},
        {"[[label]]\ntunnel = [\"a fc1/2\", \"b fc1/2\"]\nlabel = 16\nmatch = [1]\n",
         "f:15: match means nothing beside tunnel"},
        {"[[label]]\npush = [1]" + via, "f:12: a label route matches something: give it from, match or fcid"},
        {"[[label]]\nmatch = [1]\npush = [1, 2, 3, 4]" + via, "f:12: push takes 3 labels at most"},
        {"[[label]]\nmatch = [1, 2, 3]" + via, "f:12: match takes 2 labels at most"},
        {"[[label]]\nmatch = [16]" + via + "[[label]]\ntunnel = [\"a fc1/2\", \"b fc1/2\"]\nlabel = 16\n",
         "f:15: the label route of line 12 matches the same"},
        {"[[label]]\nfrom = \"b fc1/2\"" + via, "f:12: route from \"b fc1/2\" via \"a fc1/1\", of another switch"},
        {"[[label]]\nfrom = \"a fc1/2\"\nfcid = 0x020000" + via,
         "f:12: a label route matches an interface or an FC ID, not both"},
        {"[[label]]\nfcid = 0" + via, "f:12: no route leads to 0x000000/0xff0000"},
        {"[[label]]\ntunnel = [\"a fc1/2\", \"b fc1/2\"]\nlabel = 16\n"
         "[[label]]\ntunnel = [\"b fc1/3\", \"a fc1/3\"]\nlabel = 16\n",
         "f:15: the label route of line 12 matches the same"},
        {"[[distance]]\nclient = \"fspf\"\ndistance = 256\n", "f:14: distance 256 is outside 0 to 255"},
        {"[[distance]]\nclient = \"fspf\"\ndistance = 1\n[[distance]]\nclient = 12\ndistance = 1\n",
         "f:17: client 12 has a distance already"},
        {"[[event]]\nat = \"1s\"\nstatic = \"y\"\nstate = \"down\"\n", "f:14: there is no static route \"y\""},
        {"[[group]]\nname = \"video\"\nfcid = 0xfffb00\nmembers = []\n[[event]]\nat = \"1s\"\ngroup = \"vidio\"\n",
         "f:18: there is no group \"vidio\"; near: video"},
        {"[[group]]\nname = \"v\"\nfcid = 0xfffb00\nmembers = []\n[[event]]\nat = \"1s\"\ngroup = \"v\"\ncost = 3\n",
         "f:19: cost means nothing beside group"},
        {"[[group]]\nname = \"v\"\nfcid = 0xfffb00\nmembers = []\n[[event]]\nat = \"1s\"\ngroup = \"v\"\n",
         "f:16: the event changes nothing: give it a state, or what else becomes of its subject"},
        {"[[event]]\nat = \"1s\"\nlink = \"a fc1/1\"\nclient = \"fspf\"\ndistance = 3\n",
         "f:15: an event has one subject, link or client"},
        {"[[label]]\nname = \"l\"\nmatch = [1]" + via + "[[event]]\nat = \"1s\"\nlabel = \"l\"\nto = \"b fc1/2\"\n",
         "f:16: label route \"l\" is no tunnel: it ends nowhere else"},
        {"[[label]]\nname = \"l\"\ntunnel = [\"a fc1/2\", \"b fc1/2\"]\nlabel = 16\n"
         "[[event]]\nat = \"1s\"\nlabel = \"l\"\nto = \"b fc1/1\"\n",
         "f:16: b fc1/1 has a link: no tunnel can end there"},
        {"[[event]]\nat = \"1s\"\nclient = \"fspf\"\ndistance = 256\n", "f:12: distance 256 is outside 0 to 255"},
        {"[[group]]\nname = \"v\"\nfcid = 0xfffb00\nmembers = []\n"
         "[[event]]\nat = \"1s\"\ngroup = \"v\"\njoin = \"b fc1/1\"\n",
         "f:16: b fc1/1 has a link: no member can join there"},
        {"[[event]]\nat = \"1s\"\nstate = \"up\"\n", "f:12: [[event]] needs a key \"link\""},
        {"[[event]]\nat = \"1s\"\nlink = \"a fc1/1\"\nto = \"b fc1/2\"\n", "f:15: to means nothing beside link"},
    };
    for (const auto &[text, expected] : cases) {
        EXPECT_EQ(mistake(text), expected) << text;
    }
}

TEST(declared_file, a_static_route_through_an_interface_without_a_link_has_the_domain_that_is_said_or_of_a_row) {
    const auto domain_of = [](const std::string &said) {
        const std::string text = "[[static]]\nfcid = 0x070000\nvia = \"a fc1/9\"\n" + said;
        return parse_fabric(head + text, "f").declared.statics().at(0).row.domain;
    };
    EXPECT_EQ(domain_of("domain = 7\n"), 7U);
    EXPECT_EQ(domain_of(""), 1U);
}

TEST(declared_file, routes_that_differ_in_place_or_mask_or_vsan_stand_beside_each_other) {
    const std::string rule = "[[label]]\nmatch = [16]\n", vsan = "[[vsan]]\nid = 2\n";
    const std::string of_a = "via = \"a fc1/1\"\n", of_b = "via = \"b fc1/1\"\n", in_2 = "vsan = 2\n";
    for (const std::string &text :
         {rule + of_a + rule + of_b, vsan + rule + "vsan = 1\n" + of_a + rule + in_2 + of_a,
          "[[static]]\nfcid = 0x020000\n" + of_a + "[[static]]\nfcid = 0x020000\nmask = 0xffff00\n" + of_a,
          vsan + "[[static]]\nfcid = 0x020000\nvsan = 1\n" + of_a + "[[static]]\nfcid = 0x020000\n" + in_2 + of_a,
          vsan + "[[group]]\nfcid = 0xfffb00\nvsan = 1\nmembers = []\n[[group]]\nfcid = 0xfffb00\n" + in_2 +
              "members = []\n"}) {
        EXPECT_EQ(mistake(text), "none") << text;
    }
}

TEST(declared_file, a_label_route_matches_what_its_keys_say) {
    const auto key_of = [](const std::string &matches) {
        const fabric f = parse_fabric(head + "[[label]]\nvia = \"a fc1/1\"\n" + matches, "f");
        return std::get<label_rule>(f.declared.labels().at(0).what).key;
    };
    const fabric_port in = parse_fabric(head, "f").parse_port("a fc1/2", "test", 1);
    EXPECT_EQ(key_of("from = \"a fc1/2\"\n"), (model::label_key{.type = RIB_ROUTE_SRC_LABEL, .source = in.if_index}));
    EXPECT_EQ(key_of("fcid = 0x020304\n"),
              (model::label_key{.type = RIB_ROUTE_FC_LABEL, .to = {0x020000, RIB_MASK_DOMAIN}}));
    EXPECT_EQ(key_of("fcid = 0x020304\nmask = 0xffff00\n"),
              (model::label_key{.type = RIB_ROUTE_FC_LABEL, .to = {0x020300, 0xffff00}}));
}

TEST(declared_file, roles_are_known_and_there_once) {
    const auto with = [](const std::string &roles) {
        try {
            return parse_fabric("roles = " + roles + "\n" + head, "f").roles.size();
        } catch (const base::input_error &error) {
            ADD_FAILURE() << error.what();
            return size_t{0};
        }
    };
    EXPECT_EQ(with(R"(["fspf", "mcast"])"), 2U);
    EXPECT_THROW(parse_fabric("roles = [\"ospf\"]\n" + head, "f"), base::input_error);
    EXPECT_THROW(parse_fabric("roles = [\"fspf\", \"fspf\"]\n" + head, "f"), base::input_error);
}

TEST(declared_file, events_change_what_is_declared) {
    fabric f = parse_fabric(head + R"([[static]]
name = "s"
fcid = 0x020000
via = "a fc1/1"
[[group]]
name = "g"
fcid = 0xfffb00
members = ["a fc1/2"]
[[label]]
name = "l"
match = [16]
push = [17, 18]
via = "a fc1/1"
[[label]]
name = "t"
tunnel = ["a fc1/3", "b fc1/3"]
label = 19
[[event]]
at = "1s"
static = "s"
cost = 7
[[event]]
at = "2s"
group = "g"
join = "b fc1/2"
leave = "a fc1/2"
[[event]]
at = "3s"
label = "l"
state = "down"
[[event]]
at = "4s"
client = "rib-config"
distance = 9
[[event]]
at = "5s"
label = "t"
to = "b fc1/4"
[[event]]
at = "6s"
static = "s"
state = "down"
cost = 8
[[event]]
at = "7s"
group = "g"
join = "a fc1/2"
[[event]]
at = "8s"
label = "t"
state = "up"
to = "b fc1/5"
)",
                            "f");
    std::string said;
    for (const fabric_event &event : f.events()) {
        said += event_text(f, event) + '\n';
        f.apply(event);
    }
    EXPECT_EQ(said, "static route s costs 7\ngroup g: a fc1/2 leaves, b fc1/2 joins\nlabel route l is withdrawn\n"
                    "rib-config has the distance 9\nlabel route t ends at b fc1/4\n"
                    "static route s is withdrawn and costs 8\ngroup g: a fc1/2 joins\n"
                    "label route t is added and ends at b fc1/5\n");
    EXPECT_EQ(f.declared.statics()[0].row.cost, 8U);
    EXPECT_FALSE(f.declared.statics()[0].up);
    ASSERT_EQ(f.declared.groups()[0].members.size(), 2U);
    EXPECT_EQ(f.declared.groups()[0].members[1].owner, 0U);
    EXPECT_EQ(f.declared.groups()[0].members[0].owner, 1U);
    EXPECT_FALSE(f.declared.labels()[0].up);
    EXPECT_EQ(f.port_text(std::get<label_tunnel>(f.declared.labels()[1].what).to), "b fc1/5");
    EXPECT_EQ(f.declared.distance_of(RIB_CLIENT_CONFIG), 9U);
}

} // namespace
} // namespace ribkit::lab
