#include "feature_runtime.h"

#include "command_record.h"
#include "field_text.h"
#include "program.h"

#include "bcp.h"
#include "ipcq.h"
#include "ipcq_serve.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>

namespace wex_feature
{
namespace
{

volatile sig_atomic_t g_stop = 0;

// A reply must fit the transport with its request/response header.
constexpr std::size_t kMaxReply = IPCQ_MAX_PAYLOAD - sizeof(bcp_header_t);
// What one command may print: the rest of a batch's replies fit beside it.
constexpr std::size_t kMaxOutput = kMaxReply / 2;
// A page of running configuration stays well inside one reply.
constexpr std::size_t kPageBytes = 1u << 20;

struct Server {
    Feature &feature;
    int q;
    // Each shell reading the running configuration pages through the
    // snapshot taken at its first page, so its pages agree with each other.
    std::map<uint32_t, std::vector<wex_shell::ConfigBlock>> snapshots;
};

void reply_with(ipcq_response_t &response, const wex_shell::Bytes &bytes)
{
    response.payload = std::malloc(bytes.empty() ? 1 : bytes.size());
    if (!response.payload) {
        response.status = static_cast<int32_t>(WEX_STATUS_FAILURE);
        return;
    }
    std::memcpy(response.payload, bytes.data(), bytes.size());
    response.len = static_cast<uint32_t>(bytes.size());
}

std::span<const uint8_t> payload_of(const ipcq_request_info_t &request)
{
    return {static_cast<const uint8_t *>(request.payload), request.payload ? request.len : 0};
}

wex_shell::CommandOutcome apply_record(Server &server, std::span<const uint8_t> wire)
{
    std::string why;
    std::optional<wex_shell::CommandRecord> record = wex_shell::CommandRecord::rebuild(wire, why);
    if (!record)
        return {1, "% " + std::string(server.feature.module()) + ": " + why + "\n"};
    Applied applied = server.feature.apply(record->info());
    if (applied.text.size() > kMaxOutput) {
        applied.text.resize(kMaxOutput);
        applied.text += "\n% output cut short: it passed " + std::to_string(kMaxOutput) + " bytes\n";
    }
    if (applied.status == 0 && applied.changed) {
        record->info().ipcq_q = server.q; // the announcement goes out from this feature's queue
        wex_api_notify_cfg_change(&record->info());
    }
    return {applied.status, std::move(applied.text)};
}

void on_execute(void *context, const ipcq_request_info_t *request, ipcq_response_t *response)
{
    auto &server = *static_cast<Server *>(context);
    const std::optional<wex_shell::ExecuteBatch> batch = wex_shell::decode_batch(payload_of(*request));
    if (!batch) {
        response->status = static_cast<int32_t>(WEX_STATUS_FAILURE);
        return;
    }
    std::vector<wex_shell::CommandOutcome> outcomes;
    for (const std::span<const uint8_t> wire : batch->records) {
        outcomes.push_back(apply_record(server, wire));
        if (outcomes.back().status != 0 && (batch->flags & wex_shell::kStopOnError))
            break;
    }
    reply_with(*response, wex_shell::encode_outcomes(outcomes));
}

void on_running_config(void *context, const ipcq_request_info_t *request, ipcq_response_t *response)
{
    auto &server = *static_cast<Server *>(context);
    const std::optional<uint32_t> start = wex_shell::decode_page_request(payload_of(*request));
    if (start == 0u)
        server.snapshots[request->sender_queue] = server.feature.running_config();
    const auto snapshot = server.snapshots.find(request->sender_queue);
    if (!start || snapshot == server.snapshots.end() || *start > snapshot->second.size()) {
        response->status = static_cast<int32_t>(WEX_STATUS_FAILURE);
        return;
    }
    const std::vector<wex_shell::ConfigBlock> &blocks = snapshot->second;
    wex_shell::ConfigPage page;
    std::size_t bytes = 0, at = *start;
    for (; at < blocks.size() && (page.blocks.empty() || bytes + blocks[at].text.size() <= kPageBytes);
         ++at) {
        bytes += blocks[at].text.size() + 8;
        page.blocks.push_back(blocks[at]);
    }
    page.next = at < blocks.size() ? static_cast<uint32_t>(at) : 0;
    if (page.next == 0)
        server.snapshots.erase(snapshot);
    reply_with(*response, wex_shell::encode_page(page));
}

void on_signal(int)
{
    g_stop = 1;
}

std::optional<uint32_t> queue_number(const std::string &word)
{
    char *end = nullptr;
    errno = 0;
    const unsigned long value = std::strtoul(word.c_str(), &end, 10);
    if (word.empty() || *end != '\0' || errno != 0 || value < 1 || value > 65535)
        return std::nullopt;
    return static_cast<uint32_t>(value);
}

// Registers the feature's types and grammar, then asks for the main tree
// that holds its commands.
bool register_feature(Feature &feature, int q)
{
    if (!feature.register_types(q))
        return false;
    if (wex_register_parse_tree(q, feature.module()) != 0) {
        std::fprintf(stderr, "%s: wexd refused the parse tree\n", feature.module());
        return false;
    }
    const int32_t tree = wexd_generate_main_tree(q);
    if (tree < 0) {
        std::fprintf(stderr, "%s: wexd made no main tree with these commands\n", feature.module());
        return false;
    }
    std::fprintf(stderr, "%s: commands in main tree %d\n", feature.module(), tree);
    return true;
}

} // namespace

int serve(Feature &feature, int q)
{
    struct sigaction action {
    };
    action.sa_handler = on_signal;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    Server server{feature, q, {}};
    const ipcq_route_t routes[] = {{wex_shell::kOpcExecute, IPCQ_ROUTE_BCP, on_execute},
                                   {wex_shell::kOpcRunningConfig, IPCQ_ROUTE_BCP, on_running_config}};
    return ipcq_serve(q, routes, 2, nullptr, &server, &g_stop) == 0 ? 0 : 1;
}

int run(Feature &feature, int argc, char **argv)
{
    // The program is named for its module, and logs as the module.
    const char *program = feature.module();
    const std::string name = std::string("wex-") + program;
    const std::vector<std::string> args(argv + 1, argv + argc);
    const std::string usage = "usage: " + name +
                              " [--queue N]\n"
                              "Registers the " +
                              program +
                              " commands with wexd on the transport under $IPCQ_RUNTIME_DIR and\n"
                              "applies what the shell sends, from queue N (default " +
                              std::to_string(feature.default_queue()) + "), until SIGTERM or SIGINT.\n";
    if (wex_tools::print_version_if_asked(name.c_str(), args))
        return wex_tools::finish_output(name.c_str(), 0);
    if (wex_tools::wants_help(args)) {
        std::fputs(usage.c_str(), stdout);
        return wex_tools::finish_output(name.c_str(), 0);
    }
    uint32_t queue = feature.default_queue();
    if (args.size() == 2 && args[0] == "--queue" && queue_number(args[1]))
        queue = *queue_number(args[1]);
    else if (!args.empty())
        return wex_tools::usage_error(name.c_str(), "unknown argument '" + args[0] + "'", usage.c_str());

    const int q = ipcq_open(WEX_DEST_ADDRESS, queue);
    if (q < 0) {
        std::fprintf(stderr, "%s: cannot open queue %u: %s\n", program, queue, std::strerror(errno));
        return 1;
    }
    int status = 1;
    if (register_feature(feature, q)) {
        status = serve(feature, q);
        wex_deregister_parse_tree(q, program);
    }
    ipcq_close(q);
    std::fprintf(stderr, "%s: stopped\n", program);
    return status;
}

std::string taken(char *text)
{
    std::string copy = text ? text : "";
    std::free(text);
    return copy;
}

const param_arg *argument(const pinfo &command, int index)
{
    return index < command.param_count ? command.args[index] : nullptr;
}

std::string text_argument(const pinfo &command, int index)
{
    const param_arg *arg = argument(command, index);
    return arg && arg->value ? static_cast<const char *>(arg->value) : "";
}

int32_t number_argument(const pinfo &command, int index)
{
    const param_arg *arg = argument(command, index);
    int32_t value = 0;
    if (arg && arg->value)
        std::memcpy(&value, arg->value, sizeof value);
    return value;
}

std::vector<integer_range> range_list_argument(const pinfo &command, int index)
{
    const param_arg *arg = argument(command, index);
    if (!arg || !arg->value)
        return {};
    // The hexadecimal list starts with its count; the others carry a word
    // before it. The record was checked to hold as many ranges as it says.
    const bool hex = arg->type == TYPE_HEX_MULTI_RANGE;
    const auto *bytes = static_cast<const uint8_t *>(arg->value);
    uint32_t count = 0;
    std::memcpy(&count, bytes + (hex ? 0 : 4), sizeof count);
    std::vector<integer_range> ranges(count);
    std::memcpy(ranges.data(), bytes + (hex ? 4 : 8), count * sizeof(integer_range));
    return ranges;
}

std::string last_word(const pinfo &command)
{
    const std::string text = wex_tools::field_text(command.ascii_cmd);
    const std::size_t blank = text.find_last_of(' ');
    return blank == std::string::npos ? text : text.substr(blank + 1);
}

} // namespace wex_feature
