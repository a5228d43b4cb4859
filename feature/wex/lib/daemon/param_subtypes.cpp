// Parameter subtypes: the bounds of hardware-dependent placeholders sent to
// the parse-tree registration queue, and the reads of wexd's subtype and
// tree tables.
#include <wex/wexd_client.h>

#include "wex_process_api.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <syslog.h>

namespace frame = wex::daemon;

namespace
{

// Placeholder names by subtype code, code 0 first; the ficon subtypes also
// have a hexadecimal form that takes the same bounds.
struct Subtype {
    const char *name;
    const char *hex_name;
};

constexpr Subtype kSubtypes[] = {
    {"<none>", nullptr},
    {"<module>", nullptr},
    {"<ficon-port-addr>", "<ficon-port-addr-hex>"},
    {"<ficon-log-if>", "<ficon-log-if-hex>"},
    {"<ficon-impl-port-addr>", nullptr},
    {"<lakeshore-range>", nullptr},
    {"<lakeshore-asic>", nullptr},
    {"<xbar>", nullptr},
    {"<xbar_asic_inst>", nullptr},
};
static_assert(std::size(kSubtypes) == WEXD_PARAM_SUBTYPE_MAX - WEXD_PARAM_SUBTYPE_MIN + 1);

constexpr int32_t kFailure = static_cast<int32_t>(WEX_STATUS_FAILURE);

int32_t send_range(int32_t q, const char *name, int32_t lower, int32_t upper) noexcept
{
    wexd_dynamic_range_msg msg;
    std::memset(&msg, 0, sizeof msg);
    robust_strncpy(msg.name, name, sizeof msg.name);
    msg.lower = lower;
    msg.upper = upper;
    const int result = frame::send_one_way(q, PARSE_TREE_QUEUE, WEX_OPC_DYNAMIC_RANGE_SET,
                                           frame::bytes_of(msg), frame::SendOptions::none);
    if (result < 0) {
        syslog(LOG_ERR, "ERROR, ipcq_send failed, ERROR = %d, ERRNO = %d\n", result, errno);
        return kFailure;
    }
    return 0;
}

} // namespace

extern "C" {

WEX_API int32_t wexd_set_dynamic_integer_range(int32_t q, const char *name, const int32_t *lower,
                                               const int32_t *upper) noexcept
{
    syslog(LOG_NOTICE, "Call to wexd_set_dynamic_integer_range, setting %s", name ? name : "(null)");
    if (!name || !lower || !upper) {
        syslog(LOG_ERR, "ERROR, the name, the lower or the upper value of the subtype are not correct");
        return kFailure;
    }
    if (*lower > *upper) {
        syslog(LOG_ERR,
               "ERROR, the lower bound value of the dynamic range is higher that the upper bound value");
        return kFailure;
    }
    return send_range(q, name, *lower, *upper);
}

WEX_API int32_t wexd_param_subtype_register(int32_t q, int32_t subtype, const int32_t *range) noexcept
{
    if (subtype < WEXD_PARAM_SUBTYPE_MIN || subtype > WEXD_PARAM_SUBTYPE_MAX) {
        std::printf("ERROR: non existing param subtype");
        return kFailure;
    }
    const Subtype &names = kSubtypes[-subtype];
    const int32_t *lower = range ? &range[0] : nullptr;
    const int32_t *upper = range ? &range[1] : nullptr;
    char name[WEXD_PLACEHOLDER_SIZE];
    std::snprintf(name, sizeof name, "%s", names.name);
    const int32_t first = wexd_set_dynamic_integer_range(q, name, lower, upper);
    if (!names.hex_name)
        return first;
    // Both forms are always sent; the second's failure is the one reported.
    const int32_t second = wexd_set_dynamic_integer_range(q, names.hex_name, lower, upper);
    return second != 0 ? second : first;
}

WEX_API int32_t wexd_param_subtype_table_get(int32_t q, void **reply) noexcept
{
    if (!reply)
        return -1;
    frame::Reply table;
    const int32_t result = frame::exchange(q, frame::kParamSubtypeTableGet, {}, table);
    // A failed read leaves the caller no reply.
    *reply = result == 0 ? table.release() : nullptr;
    return result;
}

WEX_API int32_t wexd_tree_table_get(int32_t q, tree_table **reply) noexcept
{
    if (!reply)
        return -1;
    frame::Reply table;
    const int32_t result = frame::exchange(q, frame::kTreeTableGet, {}, table);
    // The caller walks the table by its layout: a shorter reply is no table.
    if (result == 0 && table.len < sizeof(tree_table)) {
        *reply = nullptr;
        return -1;
    }
    *reply = result == 0 ? static_cast<tree_table *>(table.release()) : nullptr;
    return result;
}

WEX_API int32_t wexd_generate_main_tree(int32_t q) noexcept
{
    frame::Reply reply;
    const int result = frame::exchange(q, frame::kMainTreeGenerate, {}, reply);
    int32_t word = -1;
    // Without a whole word in the reply there is no outcome to report.
    if (result == 0 && reply.len >= sizeof word)
        std::memcpy(&word, reply.bytes.get(), sizeof word);
    return word;
}

} // extern "C"
