// feature-demo: a feature process on the typical road of a command, from
// registration with wexd to configuration snapshots and their difference,
// against wexd-sim. Prints a heading for each step and what the library did.
#include <wex/wex.h>

#include "bcp.h"
#include "if_index.h"
#include "ipcq.h"
#include "program.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr uint32_t kFeatureQueue = 3001;
constexpr uint64_t kFcMask = 0x2;
constexpr uint32_t kNodes = 3;

void heading(int step, const char *what)
{
    std::printf("\n== Step %d: %s ==\n", step, what);
    std::fflush(stdout);
}

void result(const char *call, long long value)
{
    std::printf("   %-44s -> %lld\n", call, value);
}

std::string sandbox(const std::string &path)
{
    return std::string(WEX_DEMO_SANDBOX) + path;
}

std::string read_text(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void register_with_the_shell(int q)
{
    heading(1, "register the parse tree, the interface type and subtype bounds");
    result("wex_register_parse_tree(q, \"zone\")", wex_register_parse_tree(q, "zone"));
    intf_help_info help;
    wex_intf_help_info_reset(&help, "Fibre Channel interface");
    wex_intf_help_info_add(&help, "slot", 1, 16);
    wex_intf_help_info_add(&help, "port", 1, 64);
    wex_intf_reg_info info;
    wex_set_intf_reg_info(&info, "fc", 2, 0, "fc_verify", "fc_list", "libfc.so", &help);
    info.ascii_gen_priority = 10;
    result("wex_register_interface(q, 0x2, fc)", wex_register_interface(q, kFcMask, &info));
    const int32_t slots[2] = {1, 16};
    result("wexd_param_subtype_register(q, -1, {1, 16})", wexd_param_subtype_register(q, -1, slots));
    intf_table_entry *entries = nullptr;
    const int32_t count = wexd_interface_table_get(q, &entries);
    result("wexd_interface_table_get(q, &entries)", count);
    if (count > 0)
        show_interface_table(entries, count);
    std::free(entries);
}

// A tree for "zone name <name> member": three nodes in host order.
std::vector<uint8_t> zone_tree()
{
    std::vector<parse_tree_node> nodes(kNodes);
    std::memset(nodes.data(), 0, nodes.size() * sizeof nodes[0]);
    const char *names[kNodes][2] = {{"zone", "zone"}, {"name", "name"}, {"member", "member"}};
    for (uint32_t i = 0; i < kNodes; ++i) {
        std::strcpy(nodes[i].NodeName, names[i][0]);
        std::strcpy(nodes[i].Token, names[i][1]);
        std::strcpy(nodes[i].module_id, "zone");
        if (i + 1 < kNodes) {
            nodes[i].child_count = 1;
            nodes[i].children[0] = static_cast<uint16_t>(i + 1);
        }
    }
    const auto *bytes = reinterpret_cast<const uint8_t *>(nodes.data());
    return std::vector<uint8_t>(bytes, bytes + nodes.size() * sizeof nodes[0]);
}

void store_and_reload_the_tree(int q)
{
    heading(2, "store and reload the parse-tree image, keep it in a tree table");
    const std::string directory = sandbox("/tarn/etc/par");
    wexd_dynamic_parfile_init(directory.c_str());
    const std::string name = wexd_get_new_dynamic_parfile_name();
    std::vector<uint8_t> image = zone_tree();
    hton_array_tree(image.data(), 0, 0);
    std::ofstream(directory + "/" + name, std::ios::binary)
        .write(reinterpret_cast<const char *>(image.data()), static_cast<std::streamsize>(image.size()));
    wexd_update_current_dynamic_parfile_name();
    std::printf("   wrote %zu bytes in network order to %s\n", image.size(), name.c_str());
    const std::string stored = read_text(directory + "/" + wexd_get_current_dynamic_parfile_name());
    std::vector<uint8_t> loaded(stored.begin(), stored.end());
    ntoh_array_tree(loaded.data(), 0, 0);
    std::printf("   read it back and converted it to host order; the dump:\n");
    display_array_tree(loaded.data(), 0, 0);
    tree_table table{};
    table.last_index = -1;
    tree_table_entry entry;
    set_tree_table_entry(&entry, "zone", name.c_str());
    insert_entry_in_tree_table(&table, &entry);
    show_tree_table(table.entries, static_cast<uint32_t>(table.last_index + 1));
    char daemon_name[WEX_FILE_NAME_SIZE] = "";
    result("wexd_wex_dynamic_parfile_name_get(q, name)", wexd_wex_dynamic_parfile_name_get(q, daemon_name));
    std::printf("   wexd's dynamic par file: %s\n", daemon_name);
}

struct Command {
    pinfo info{};
    char zone_name[8] = "Z1";
    int32_t vsan = 10;
    intf_range_list ports{};
    param_arg args[3]{};
};

std::unique_ptr<Command> typed_command(int q)
{
    heading(3, "a user types \"zone name Z1 vsan 10 member interface fc1/1-4\": the pinfo");
    auto command = std::make_unique<Command>();
    pinfo &info = command->info;
    info.ipcq_q = q;
    info.command_id = 42;
    std::strcpy(info.ascii_cmd, "zone name Z1 vsan 10 member interface fc1/1-4");
    std::strcpy(info.username, "admin");
    std::strcpy(info.vty_id, "pts/0");
    command->ports.count = 1;
    populate_intf_range(&command->ports, 0, IF_INDEX_MAKE(1, 1, 1), IF_INDEX_MAKE(1, 1, 4));
    populate_param_arg(&command->args[0], 1, TYPE_STRING, 0, 0, command->zone_name);
    populate_param_arg(&command->args[1], 2, TYPE_VSAN, 0, 0, &command->vsan);
    populate_param_arg(&command->args[2], 3, TYPE_INTERFACE_RANGE, 0, kFcMask, &command->ports);
    for (param_arg &arg : command->args)
        pinfo_insert_arg(&info, &arg);
    std::printf("   %u arguments: a string, a VSAN and an interface range\n", info.param_count);
    return command;
}

void read_the_arguments(const pinfo &info)
{
    heading(4, "the feature reads its arguments and dumps the record");
    uint64_t mask = 0;
    pinfo_get_latest_intf_mask(&info, &mask);
    std::printf("   latest interface mask: 0x%llx\n   interfaces: ", static_cast<unsigned long long>(mask));
    print_interface_range(static_cast<const intf_range_list *>(info.args[2]->value));
    std::printf("\n");
    print_pinfo(&info);
}

void announce_the_change(const pinfo &info)
{
    heading(5, "announce the configuration change");
    result("wex_api_notify_cfg_change(&info)", wex_api_notify_cfg_change(&info));
}

std::string snapshot(const char *name)
{
    wex_cfg_gen_params_t params{};
    std::snprintf(params.out_file, sizeof params.out_file, "%s",
                  sandbox(std::string("/volatile/") + name).c_str());
    const int status = wex_generate_running_cfg_rollback(&params);
    result((std::string("wex_generate_running_cfg_rollback -> ") + name).c_str(), status);
    return read_text(params.out_file);
}

void snapshots_around_a_change()
{
    heading(6, "running-configuration snapshots around the change, and their difference");
    const std::string running = sandbox("/volatile/running-config");
    setenv("WEX_DEMO_RUNNING_CONFIG", running.c_str(), 1);
    std::ofstream(running) << "vsan database\n  vsan 10\nzone name Z0 vsan 10\n  member interface fc1/9\n";
    const std::string before = snapshot("before.cfg");
    std::ofstream(running) << "vsan database\n  vsan 10\nzone name Z0 vsan 10\n  member interface fc1/9\n"
                              "zone name Z1 vsan 10\n  member interface fc1/1-4\n";
    const std::string after = snapshot("after.cfg");
    std::printf("   wex_diff(before, after):\n");
    std::fflush(stdout);
    wex_diff(before.c_str(), after.c_str());
    result("wex_is_diff_same(before, after)", wex_is_diff_same(before.c_str(), after.c_str()));
}

} // namespace

int main(int argc, char **argv)
{
    if (wex_tools::print_version_if_asked("feature-demo", std::vector<std::string>(argv + 1, argv + argc)))
        return wex_tools::finish_output("feature-demo", 0);
    const int q = ipcq_open(WEX_DEST_ADDRESS, kFeatureQueue);
    if (q < 0) {
        std::perror("feature-demo: cannot open its queue");
        return 1;
    }
    std::printf("feature-demo: queue %u open at %08x\n", kFeatureQueue, WEX_DEST_ADDRESS);
    register_with_the_shell(q);
    store_and_reload_the_tree(q);
    const std::unique_ptr<Command> command = typed_command(q);
    read_the_arguments(command->info);
    announce_the_change(command->info);
    snapshots_around_a_change();
    std::printf("\n== Done: withdrawing the registrations ==\n");
    result("wex_deregister_interface(q, 0x2)", wex_deregister_interface(q, kFcMask));
    result("wex_deregister_parse_tree(q, \"zone\")", wex_deregister_parse_tree(q, "zone"));
    ipcq_close(q);
    return 0;
}
