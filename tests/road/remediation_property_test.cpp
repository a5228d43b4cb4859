// The remediation engine against the real shell and features: for random
// pairs of configurations made from the sample grammars, the commands
// worked out from the running one to a wanted one, run through the shell,
// give the wanted one; worked out again they are none; and a configuration
// needs none to become itself. Each wanted configuration is the next pair's
// running one.
#include "support/sandbox.h"
#include "tools/road_system.h"

#include "command_grammar.h"
#include "main_tree.h"
#include "remediation.h"

#include <wex/output.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>

namespace
{

using wex_remediation::OnProblem;

// Pairs run by the suite; WEX_PROPERTY_PAIRS asks for more, and
// WEX_PROPERTY_SEED for other configurations.
constexpr unsigned kDefaultPairs = 1000;

unsigned from_environment(const char *name, unsigned fallback)
{
    const char *value = std::getenv(name);
    return value && *value ? static_cast<unsigned>(std::strtoul(value, nullptr, 10)) : fallback;
}

// Configurations as the features show them: VSANs, ports with settings,
// zones with members, zone sets naming zones of their VSAN in an order that
// matters, and activations, each present or not at random.
class Generator
{
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::string configuration()
    {
        std::string text;
        std::vector<int> vsans;
        for (int vsan = 2; vsan <= 5; ++vsan) {
            if (!chance(50))
                continue;
            vsans.push_back(vsan);
            text += "vsan " + std::to_string(vsan) + " name " + pick({"red", "blue"}) + "\n";
            if (chance(25))
                text += "vsan " + std::to_string(vsan) + " suspend\n";
        }
        for (int port = 1; port <= 5; ++port)
            text += port_block(port, vsans);
        std::vector<std::string> zones[3];
        for (int vsan = 1; vsan <= 2; ++vsan)
            for (int zone = 1; zone <= 3; ++zone)
                if (chance(50)) {
                    zones[vsan].push_back("z" + std::to_string(zone));
                    text += "zone name z" + std::to_string(zone) + " vsan " + std::to_string(vsan) + "\n" +
                            zone_members();
                }
        for (int vsan = 1; vsan <= 2; ++vsan)
            text += zone_sets(vsan, zones[vsan]);
        return text;
    }

  private:
    bool chance(unsigned percent) { return random_() % 100 < percent; }
    std::string pick(std::initializer_list<const char *> choices)
    {
        return *(choices.begin() + random_() % choices.size());
    }

    std::string port_block(int port, const std::vector<int> &vsans)
    {
        std::string lines;
        if (chance(40))
            lines += "  no shutdown\n";
        if (chance(40))
            lines += std::string("  speed ") + pick({"4000", "8000", "16000", "auto"}) + "\n";
        if (chance(30))
            lines += std::string("  port-mode ") + pick({"E", "F"}) + "\n";
        if (chance(30))
            lines += std::string("  description ") + pick({"to core", "tape library"}) + "\n";
        if (!vsans.empty() && chance(40))
            lines += "  vsan " + std::to_string(vsans[random_() % vsans.size()]) + "\n";
        return lines.empty() ? "" : "interface fc1/" + std::to_string(port) + "\n" + lines;
    }

    std::string zone_members()
    {
        std::vector<std::string> members = {"member wwn 21:00:00:24:ff:4c:a2:10",
                                            "member wwn 21:00:00:24:ff:4c:a2:11", "member fcid 0x010203",
                                            "member interface fc1/3"};
        std::shuffle(members.begin(), members.end(), random_);
        std::string lines;
        for (std::size_t i = 0, count = random_() % 4; i < count; ++i)
            lines += "  " + members[i] + "\n";
        return lines;
    }

    std::string zone_sets(int vsan, std::vector<std::string> zones)
    {
        std::string text, active;
        const std::string in_vsan = " vsan " + std::to_string(vsan);
        for (const char *set : {"s1", "s2"}) {
            if (!chance(60))
                continue;
            text += std::string("zone-set name ") + set + in_vsan + "\n";
            std::shuffle(zones.begin(), zones.end(), random_);
            for (std::size_t i = 0, count = random_() % (zones.size() + 1); i < count; ++i)
                text += "  member " + zones[i] + "\n";
            if (chance(50))
                active = set;
        }
        return active.empty() ? text : text + "zone-set activate " + active + in_vsan + "\n";
    }

    std::mt19937 random_;
};

// The main tree wexd made last, with both features' commands in it.
std::string newest_main_tree(const std::string &par_dir)
{
    std::string newest;
    unsigned highest = 0;
    for (const auto &entry : std::filesystem::directory_iterator(par_dir)) {
        const std::string name = entry.path().filename();
        unsigned number = 0;
        if (std::sscanf(name.c_str(), "main_tree%u.par", &number) == 1 && number >= highest) {
            highest = number;
            newest = entry.path();
        }
    }
    return newest;
}

std::string joined(const std::vector<std::string> &commands)
{
    std::string text;
    for (const std::string &command : commands)
        text += command + "\n";
    return text;
}

TEST(RemediationProperty, CommandsRunThroughTheShellGiveTheWantedConfiguration)
{
    wex_test::RoadSystem road;
    ASSERT_EQ(road.problem(), "");
    std::string why;
    const std::optional<wex_shell::MainTree> tree =
        wex_shell::MainTree::load(newest_main_tree(road.path("par")), why);
    ASSERT_TRUE(tree) << why;
    const wex_remediation::CommandGrammar grammar(*tree);
    const unsigned seed = from_environment("WEX_PROPERTY_SEED", 11);
    Generator generator(seed);
    std::string running;
    for (unsigned pair = 0, pairs = from_environment("WEX_PROPERTY_PAIRS", kDefaultPairs); pair < pairs;
         ++pair) {
        const std::string wanted = generator.configuration();
        const wex_remediation::Remediation plan =
            wex_remediation::remediate(grammar, running, wanted, OnProblem::refuse);
        const std::string commands = joined(plan.commands);
        SCOPED_TRACE("seed " + std::to_string(seed) + ", pair " + std::to_string(pair) + "\nrunning:\n" +
                     running + "wanted:\n" + wanted + "commands:\n" + commands);
        ASSERT_FALSE(plan.refused) << plan.problems.front().why;
        wex_test::write_file(road.path("commands.cfg"), commands + "end\nshow running-config\n");
        const wex_test::ToolRun run = wex_test::run_tool(
            WEX_SHELL_PATH, {"-nRr", road.path("commands.cfg"), "-e", "1"}, road.runtime_dir());
        ASSERT_EQ(run.status, 0) << run.err;
        running = run.out;
        ASSERT_EQ(wex_is_diff_same(running.c_str(), wanted.c_str()), 1) << "shown:\n" << running;
        EXPECT_EQ(joined(wex_remediation::remediate(grammar, running, wanted, OnProblem::refuse).commands),
                  "");
        EXPECT_EQ(joined(wex_remediation::remediate(grammar, wanted, wanted, OnProblem::refuse).commands),
                  "");
    }
}

} // namespace
