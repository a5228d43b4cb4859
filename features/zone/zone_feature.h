// The zone feature's state and commands: zones of members per VSAN, zone
// sets of zones, and the zone set active in each VSAN.
#ifndef WEX_FEATURES_ZONE_FEATURE_H
#define WEX_FEATURES_ZONE_FEATURE_H

#include "feature_runtime.h"

#include <map>
#include <string>
#include <vector>

namespace wex_feature
{

class ZoneFeature final : public Feature
{
  public:
    const char *module() const override { return "zone"; }
    uint32_t default_queue() const override { return 3100; }
    bool register_types(int) override { return true; }
    Applied apply(const pinfo &command) override;
    std::vector<wex_shell::ConfigBlock> running_config() const override;

  private:
    // A zone or zone set: its VSAN, then its name.
    using Key = std::pair<int32_t, std::string>;
    // What a session's submode works on.
    struct Selection {
        bool zone_set = false;
        Key key;
    };

    Applied name_command(const pinfo &command, bool zone_set);
    Applied zone_member(const pinfo &command);
    Applied zone_set_member(const pinfo &command);
    Applied activate(const pinfo &command);
    Applied show(const pinfo &command) const;
    Applied show_fcids(const pinfo &command) const;
    std::vector<std::string> *selected_members(const pinfo &command, bool zone_set, Applied &refusal);
    std::string zone_set_naming(const Key &zone) const;

    std::map<Key, std::vector<std::string>> zones_;     // member lines, in the order added
    std::map<Key, std::vector<std::string>> zone_sets_; // zone names, in the order added
    std::map<int32_t, std::string> active_;             // VSAN -> its active zone set
    std::map<std::string, Selection> sessions_;         // session id -> what its submode works on
};

} // namespace wex_feature

#endif
