// The interface feature's state and commands: Fibre Channel ports with
// their settings, and the VSANs they belong to.
#ifndef WEX_FEATURES_INTERFACE_FEATURE_H
#define WEX_FEATURES_INTERFACE_FEATURE_H

#include "feature_runtime.h"

#include <map>
#include <string>
#include <vector>

namespace wex_feature
{

class InterfaceFeature final : public Feature
{
  public:
    const char *module() const override { return "interface"; }
    uint32_t default_queue() const override { return 3200; }
    bool register_types(int q) override;
    Applied apply(const pinfo &command) override;
    std::vector<wex_shell::ConfigBlock> running_config() const override;

  private:
    // A port's settings. A port is down until "no shutdown"; settings at
    // their defaults are left out of the running configuration, and so is a
    // port with nothing but defaults.
    struct Port {
        bool up = false;
        std::string speed, port_mode, description;
        int32_t vsan = 1;

        bool operator==(const Port &) const = default;
    };
    struct Vsan {
        std::string name;
        bool suspended = false;
    };

    Applied enter(const pinfo &command);
    Applied port_setting(const pinfo &command);
    Applied vsan_command(const pinfo &command);
    Applied show_brief(const pinfo &command) const;
    Applied show_vsans(const pinfo &command) const;
    std::vector<uint32_t> indexes_of(const param_arg *ranges) const;

    std::map<uint32_t, Port> ports_;                        // by interface index
    std::map<int32_t, Vsan> vsans_;                         // VSAN 1 always exists
    std::map<std::string, std::vector<uint32_t>> sessions_; // session id -> ports selected
};

} // namespace wex_feature

#endif
