// The pinfo of a matched command with its arguments and their values, held
// together, and its form on the wire: one block in which the argument
// pointers are offsets, rebuilt by the feature that receives it.
#ifndef WEX_SHELL_COMMAND_RECORD_H
#define WEX_SHELL_COMMAND_RECORD_H

#include "matcher.h"

#include <wex/param.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wex_shell
{

// Who runs a command and from where: the context fields of its pinfo.
struct SessionContext {
    std::string user;
    std::string terminal;
    std::string session_id;
    std::string program;    // "wex", or "wexboot" for the boot image's shell
    int32_t shell_type = 0; // WEX_IMAGE_MAIN or WEX_IMAGE_BOOT, as the program
    int32_t ipcq_q = 0;
};

class CommandRecord
{
  public:
    // The record of a match: context, the matched command's identity and
    // text, one argument per value in command order.
    static CommandRecord build(const MainTree &tree, const Match &match, const SessionContext &session,
                               int32_t submode_context);

    // The record's wire form, appended to wire.
    void flatten_into(std::vector<uint8_t> &wire) const;

    // The record of a wire form, or nothing with why set when the bytes are
    // not one made by flatten_into in a program of the same record layout.
    static std::optional<CommandRecord> rebuild(std::span<const uint8_t> wire, std::string &why);

    pinfo &info() { return *info_; }
    const pinfo &info() const { return *info_; }

  private:
    CommandRecord();
    void add_argument(int32_t token_id, const TypedValue &value);

    // One argument's value record, 8-byte aligned, and its size in bytes.
    struct Value {
        std::unique_ptr<uint64_t[]> words;
        std::size_t size;
    };

    std::unique_ptr<pinfo> info_;
    std::unique_ptr<param_arg[]> args_; // room for every slot of the pinfo
    std::vector<Value> values_;         // in argument order
};

} // namespace wex_shell

#endif
