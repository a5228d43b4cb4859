// Every daemon reply the library takes apart, as the recording transport
// hands it over: the first byte picks the request, the next four are the
// status the reply carries, the rest is its payload.
#include "fakes/transport_fake.h"
#include "harness.h"

#include <wex/wex.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>

using namespace wex_fake;

namespace
{

constexpr int32_t kQueue = 3;

void release(void *reply)
{
    std::free(reply);
}

const std::function<void()> kRequests[] = {
    [] {
        intf_table_entry *entries = nullptr;
        wexd_interface_table_get(kQueue, &entries);
        release(entries);
    },
    [] {
        tree_table *table = nullptr;
        wexd_tree_table_get(kQueue, &table);
        release(table);
    },
    [] {
        void *table = nullptr;
        wexd_param_subtype_table_get(kQueue, &table);
        release(table);
    },
    [] { wexd_generate_main_tree(kQueue); },
    [] {
        wexd_wex_config *settings = nullptr;
        wexd_wex_configuration_get(kQueue, &settings);
        release(settings);
    },
    [] {
        wexd_wex_config settings;
        wexd_wex_config_info_get(kQueue, &settings);
    },
    [] {
        char name[WEX_FILE_NAME_SIZE];
        wexd_wex_dynamic_parfile_name_get(kQueue, name);
    },
    [] {
        void *roles = nullptr;
        uint32_t len = 0;
        wexd_role_info_get(kQueue, WEX_MSG_TYPE_READ, WEXD_ROLE_QUERY_ALL, nullptr, &roles, &len);
        release(roles);
    },
    [] {
        void *role = nullptr;
        uint32_t len = 0;
        wexd_role_info_get(kQueue, WEX_MSG_TYPE_READ, 7, "ops", &role, &len);
        release(role);
    },
    [] {
        void *locales = nullptr;
        uint32_t len = 0;
        wexd_locale_info_get(kQueue, WEX_MSG_TYPE_READ, 0, "", &locales, &len);
        release(locales);
    },
    [] { wexd_perm_group_role_name_verify(kQueue, "ops"); },
    [] { wex_get_feature_privilege(kQueue); },
    [] { wexd_cli_lock(kQueue, 7); },
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 5)
        return 0;
    int32_t status = 0;
    std::memcpy(&status, data + 1, sizeof status);
    const Bytes payload(data + 5, data + size);
    Transport &fake = transport();
    fake.reset();
    fake.script("req_resp", replies(payload, status));
    fake.script("recv", replies(payload));
    fake.script("parse_response", replies(payload, status));
    kRequests[data[0] % std::size(kRequests)]();
    return 0;
}
