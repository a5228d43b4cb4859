#include "config_generator.h"

#include <algorithm>
#include <random>
#include <vector>

namespace wex_bench
{

namespace
{

struct Node {
    std::string text;
    std::vector<Node> children;
};

constexpr int kVsans = 8;
constexpr int kMembersPerZone = 6;

std::string port(long i)
{
    return "fc" + std::to_string(i / 48 + 1) + "/" + std::to_string(i % 48 + 1);
}

std::string wwn(long i)
{
    char text[32];
    std::snprintf(text, sizeof text, "20:00:00:25:b5:%02lx:%02lx:%02lx", (i >> 16) & 0xff, (i >> 8) & 0xff,
                  i & 0xff);
    return text;
}

std::vector<Node> make_config(long lines)
{
    std::vector<Node> top;
    const long interfaces = std::min(lines / 20, 4000L);
    Node database{"vsan database", {}};
    for (long i = 0; i < interfaces; ++i) {
        top.push_back({"interface " + port(i),
                       {{"  switchport mode auto", {}},
                        {"  switchport speed 8000", {}},
                        {"  port-license acquire", {}},
                        {"  no shutdown", {}}}});
        database.children.push_back(
            {"  vsan " + std::to_string(i % kVsans + 1) + " interface " + port(i), {}});
    }
    top.push_back(database);
    const long zones = std::max(0L, (lines - interfaces * 6) / (kMembersPerZone + 1));
    std::vector<Node> sets(kVsans);
    for (int v = 0; v < kVsans; ++v)
        sets[v].text = "zoneset name fabric" + std::to_string(v + 1) + " vsan " + std::to_string(v + 1);
    for (long z = 0; z < zones; ++z) {
        Node zone{"  zone name host" + std::to_string(z) + "_array", {}};
        for (int m = 0; m < kMembersPerZone; ++m)
            zone.children.push_back({"    member pwwn " + wwn(z * kMembersPerZone + m), {}});
        sets[z % kVsans].children.push_back(zone);
    }
    top.insert(top.end(), sets.begin(), sets.end());
    return top;
}

// About 1% each of changed, removed and added lines, and of siblings moved.
void mutate(std::vector<Node> &siblings, std::mt19937 &random, const std::string &indent)
{
    std::uniform_int_distribution<int> percent(0, 99);
    for (std::size_t i = 0; i < siblings.size(); ++i) {
        switch (percent(random)) {
        case 0:
            siblings[i].text += " changed";
            break;
        case 1:
            siblings.erase(siblings.begin() + static_cast<long>(i));
            --i;
            continue;
        case 2:
            siblings.insert(siblings.begin() + static_cast<long>(i),
                            Node{indent + "added " + std::to_string(i), {}});
            ++i;
            break;
        case 3:
            std::swap(siblings[i], siblings[random() % siblings.size()]);
            break;
        }
        mutate(siblings[i].children, random, indent + "  ");
    }
}

void write(const std::vector<Node> &siblings, std::string &out)
{
    for (const Node &n : siblings) {
        out += n.text;
        out += '\n';
        write(n.children, out);
    }
}

long count(const std::vector<Node> &siblings)
{
    long n = 0;
    for (const Node &node : siblings)
        n += 1 + count(node.children);
    return n;
}

} // namespace

ConfigPair make_config_pair(long lines, unsigned seed)
{
    std::vector<Node> config = make_config(lines);
    ConfigPair pair;
    pair.lines = count(config);
    write(config, pair.first);
    std::mt19937 random(seed);
    mutate(config, random, "");
    write(config, pair.second);
    return pair;
}

} // namespace wex_bench
