#include "command_record.h"

#include <cstring>

namespace wex_shell
{
namespace
{

// "WXC1": a command record of this wire form.
constexpr uint32_t kMagic = 0x57584331;

struct WireHeader {
    uint32_t magic;
    uint32_t pinfo_size; // a receiver with another record layout refuses the record
    uint32_t arg_count;
    uint32_t reserved;
};

struct WireArg {
    int32_t token_id;
    uint32_t type;
    uint64_t intf_mask;
    uint32_t addr_type;
    uint32_t value_size;
};

std::size_t padded(std::size_t size)
{
    return (size + 7) & ~std::size_t{7};
}

template <typename Record> void append(std::vector<uint8_t> &wire, const Record &record)
{
    const std::size_t at = wire.size();
    wire.resize(at + sizeof record);
    std::memcpy(wire.data() + at, &record, sizeof record);
}

void copy_text(char *field, std::size_t width, const std::string &text)
{
    robust_strncpy(field, text.c_str(), width);
}

} // namespace

CommandRecord::CommandRecord() : info_(new pinfo), args_(new param_arg[WEX_PINFO_MAX_ARGS]())
{
    pinfo_basic_copy(info_.get(), nullptr);
}

void CommandRecord::add_argument(int32_t token_id, const TypedValue &value)
{
    // A zero word after every value: a text rebuilt from another process
    // ends inside its record even when its own terminator was left off.
    const std::size_t words = padded(value.bytes.size()) / 8 + 1;
    Value &stored = values_.emplace_back(Value{std::make_unique<uint64_t[]>(words), value.bytes.size()});
    if (!value.bytes.empty())
        std::memcpy(stored.words.get(), value.bytes.data(), value.bytes.size());
    param_arg &arg = args_[info_->param_count];
    populate_param_arg(&arg, token_id, value.type, 0, value.intf_mask, stored.words.get());
    arg.addr_type = value.addr_type;
    pinfo_insert_arg(info_.get(), &arg);
}

CommandRecord CommandRecord::build(const MainTree &tree, const Match &match, const SessionContext &session,
                                   int32_t submode_context)
{
    CommandRecord record;
    pinfo &info = record.info();
    const parse_tree_node &last = tree.node(match.path.back().node);
    info.no_flag = match.negated;
    info.submode_context = submode_context;
    info.shell_type = session.shell_type;
    info.ipcq_q = session.ipcq_q;
    info.command_id = last.command_id;
    info.bcp_msg_type = last.bcp_msg_type;
    copy_text(info.ascii_cmd, sizeof info.ascii_cmd, match.full_text);
    copy_text(info.vty_id, sizeof info.vty_id, session.terminal);
    copy_text(info.username, sizeof info.username, session.user);
    copy_text(info.session_id, sizeof info.session_id, session.session_id);
    for (const MatchedNode &step : match.path) {
        for (const TypedValue &value : step.values) {
            // The record holds as many arguments as its slots; a grammar's
            // commands are far shorter than 64 parameters.
            if (info.param_count < WEX_PINFO_MAX_ARGS)
                record.add_argument(static_cast<int32_t>(tree.node(step.node).token_id), value);
        }
    }
    return record;
}

void CommandRecord::flatten_into(std::vector<uint8_t> &wire) const
{
    append(wire, WireHeader{kMagic, sizeof(pinfo), info_->param_count, 0});
    pinfo copy;
    std::memcpy(&copy, info_.get(), sizeof copy);
    std::memset(copy.args, 0, sizeof copy.args); // pointers mean nothing in another process
    append(wire, copy);
    for (std::size_t i = 0; i < info_->param_count; ++i) {
        const param_arg &arg = args_[i];
        const Value &value = values_[i];
        append(wire, WireArg{arg.token_id, arg.type, arg.intf_mask, arg.addr_type,
                             static_cast<uint32_t>(value.size)});
        const auto *bytes = reinterpret_cast<const uint8_t *>(value.words.get());
        wire.insert(wire.end(), bytes, bytes + padded(value.size));
    }
}

std::optional<CommandRecord> CommandRecord::rebuild(std::span<const uint8_t> wire, std::string &why)
{
    WireHeader header{};
    if (wire.size() < sizeof header + sizeof(pinfo)) {
        why = "a command record shorter than its header";
        return std::nullopt;
    }
    std::memcpy(&header, wire.data(), sizeof header);
    if (header.magic != kMagic || header.pinfo_size != sizeof(pinfo) ||
        header.arg_count > WEX_PINFO_MAX_ARGS) {
        why = "a command record of another form";
        return std::nullopt;
    }
    CommandRecord record;
    std::memcpy(record.info_.get(), wire.data() + sizeof header, sizeof(pinfo));
    record.info_->param_count = 0;
    std::size_t at = sizeof header + sizeof(pinfo);
    for (uint32_t i = 0; i < header.arg_count; ++i) {
        WireArg arg{};
        if (wire.size() - at < sizeof arg) {
            why = "a command record cut short in argument " + std::to_string(i + 1);
            return std::nullopt;
        }
        std::memcpy(&arg, wire.data() + at, sizeof arg);
        at += sizeof arg;
        if (arg.value_size > wire.size() - at || padded(arg.value_size) > wire.size() - at) {
            why = "a command record cut short in the value of argument " + std::to_string(i + 1);
            return std::nullopt;
        }
        const TypedValue value{arg.type, arg.intf_mask, arg.addr_type,
                               std::vector<uint8_t>(wire.data() + at, wire.data() + at + arg.value_size)};
        if (!value_fits(value.type, value.bytes)) {
            why = "a command record whose argument " + std::to_string(i + 1) + " is not a value of its type";
            return std::nullopt;
        }
        record.add_argument(arg.token_id, value);
        at += padded(arg.value_size);
    }
    if (at != wire.size()) {
        why = "a command record with bytes after its last argument";
        return std::nullopt;
    }
    return record;
}

} // namespace wex_shell
