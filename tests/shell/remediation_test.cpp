// The remediation engine on the sample grammars: the exact commands for
// each rule, worked out by hand, and the line-set difference as data
// against the library's own comparison.
#include "command_grammar.h"
#include "line_set_diff.h"
#include "remediation.h"
#include "sample_tree.h"
#include "support/capture.h"

#include <wex/output.h>

#include <gtest/gtest.h>

#include <random>

namespace
{

using wex_remediation::OnProblem;

std::string commands_of(const wex_remediation::Remediation &result)
{
    std::string text;
    for (const std::string &command : result.commands)
        text += command + "\n";
    return text;
}

std::string problems_of(const wex_remediation::Remediation &result)
{
    std::string text;
    for (const wex_remediation::Problem &problem : result.problems)
        text += wex_remediation::describe(problem, "running", "wanted") + "\n";
    return text;
}

TEST(Remediation, EachRuleGivesItsCommandsInTheirOrder)
{
    const wex_remediation::CommandGrammar grammar(wex_test::sample_tree());
    const struct {
        const char *rule, *running, *wanted, *commands;
    } cases[] = {
        {"the same lines, in another order and abbreviated",
         "vsan 10 name a\ninterface fc1/1\n  speed 8000\n", "int fc1/1\n  sp 8000\nvsan 10 name a\n", ""},
        {"a removed block is negated once, at its parent", "zone name z vsan 1\n  member fcid 0x010203\n", "",
         "no zone name z vsan 1\n"},
        {"a new value alone, without a negation", "interface fc1/1\n  speed 8000\n",
         "interface fc1/1\n  speed 16000\n", "interface fc1/1\n  speed 16000\n  exit\n"},
        {"an addition, parent first, inside its submode", "", "zone name z vsan 1\n  member fcid 0x010203\n",
         "zone name z vsan 1\n  member fcid 0x010203\n  exit\n"},
        {"removals by falling priority, then additions by rising", "vsan 10 name a\nzone name z vsan 10\n",
         "zone name y vsan 20\nvsan 20 name b\n",
         "no zone name z vsan 10\nno vsan 10 name a\nvsan 20 name b\nzone name y vsan 20\n  exit\n"},
        {"a removal waits for the changes above it", "vsan 10 name a\ninterface fc1/1\n  vsan 10\n",
         "vsan 20 name b\ninterface fc1/1\n  vsan 20\n",
         "vsan 20 name b\ninterface fc1/1\n  vsan 20\n  exit\nno vsan 10 name a\n"},
        {"an ordered list given again from where its order differs",
         "zone-set name s vsan 1\n  member a\n  member b\n  member c\n",
         "zone-set name s vsan 1\n  member a\n  member c\n  member b\n",
         "zone-set name s vsan 1\n  no member c\n  no member b\n  exit\n"
         "zone-set name s vsan 1\n  member c\n  member b\n  exit\n"},
        {"a line out of an ordered list keeps the order of the rest",
         "zone-set name s vsan 1\n  member a\n  member b\n  member c\n",
         "zone-set name s vsan 1\n  member a\n  member c\n",
         "zone-set name s vsan 1\n  no member b\n  exit\n"},
        {"a line beginning with no is undone without it", "interface fc1/1\n  no shutdown\n  speed 8000\n",
         "interface fc1/1\n  speed 8000\n", "interface fc1/1\n  shutdown\n  exit\n"},
        {"a removal the wanted text states is made once", "interface fc1/1\n  shutdown\n",
         "interface fc1/1\n  no shutdown\n", "interface fc1/1\n  no shutdown\n  exit\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.rule);
        const wex_remediation::Remediation result =
            wex_remediation::remediate(grammar, c.running, c.wanted, OnProblem::refuse);
        EXPECT_EQ(problems_of(result), "");
        EXPECT_EQ(commands_of(result), c.commands);
    }
}

TEST(Remediation, LinesNoCommandTakesAreRefusedOrSkippedAndAlwaysNamed)
{
    const wex_remediation::CommandGrammar grammar(wex_test::sample_tree());
    const char *running = "vsan 10 name a\nbogus line\nipv6 route 2001:db8::1 fe80::1\n";
    const char *wanted = "interface fc1/1\n  speed 9\n  no shutdown";
    const std::string named =
        "running:2: \"bogus line\": no command matches it: Unknown word \"bogus\"\n"
        "running:3: \"ipv6 route 2001:db8::1 fe80::1\": it cannot be removed: its command has no negation\n"
        "wanted:2: \"speed 9\": no command matches it: Unknown word \"9\": expected 1000, 2000, 4000, 8000, "
        "16000, 32000, auto\n";
    const wex_remediation::Remediation refused =
        wex_remediation::remediate(grammar, running, wanted, OnProblem::refuse);
    EXPECT_TRUE(refused.refused);
    EXPECT_EQ(commands_of(refused), "");
    EXPECT_EQ(problems_of(refused), named);
    // Skipped, the rest still goes, the last line without its line end too.
    const wex_remediation::Remediation skipped =
        wex_remediation::remediate(grammar, running, wanted, OnProblem::skip);
    EXPECT_FALSE(skipped.refused);
    EXPECT_EQ(problems_of(skipped), named);
    EXPECT_EQ(commands_of(skipped), "no vsan 10 name a\ninterface fc1/1\n  no shutdown\n  exit\n");
}

TEST(LineSetDiff, SaysWhatTheLibrarysComparisonPrintsWithLineNumbers)
{
    using wex_remediation::ConfigText, wex_remediation::LastLine;
    const auto entries = [](const std::string &first, const std::string &second) {
        return wex_remediation::line_set_diff(ConfigText(first, LastLine::ignored),
                                              ConfigText(second, LastLine::ignored));
    };
    EXPECT_EQ(wex_remediation::diff_json(
                  entries("interface a\n  shutdown\n", "interface a\n  no shutdown\nq\"\t\n")),
              "[{\"mark\":\" \",\"first\":1,\"second\":1,\"text\":\"interface a\",\"children\":["
              "{\"mark\":\"-\",\"first\":2,\"second\":0,\"text\":\"  shutdown\",\"children\":[]},"
              "{\"mark\":\"+\",\"first\":0,\"second\":2,\"text\":\"  no shutdown\",\"children\":[]}]},"
              "{\"mark\":\"+\",\"first\":0,\"second\":3,\"text\":\"q\\\"\\u0009\",\"children\":[]}]\n");
    // Random texts of few distinct lines, so that lines repeat, indent
    // past their parents, and blank and unterminated lines occur.
    const char *lines[] = {"a", "b", " a", "  a", "  b", "   c", "    d", "\tb", "", "  ", "a \r"};
    std::mt19937 random(5);
    const auto text = [&] {
        std::string t;
        for (std::size_t n = random() % 12; n > 0; --n)
            t += std::string(lines[random() % std::size(lines)]) + (n > 1 || random() % 2 ? "\n" : "");
        return t;
    };
    for (int pair = 0; pair < 500; ++pair) {
        const std::string first = text(), second = text();
        SCOPED_TRACE("first:\n" + first + "\nsecond:\n" + second);
        ASSERT_EQ(wex_remediation::diff_text(entries(first, second)),
                  wex_test::capture_stdout([&] { wex_diff(first.c_str(), second.c_str()); }));
    }
}

} // namespace
