// Requests that go over the transport instead of through a shell: the
// default-interface operation and the feature privilege.
#include <wex/exec.h>
#include <wex/wexd_client.h>

#include "common/alloc.h"
#include "wex_process_api.h"

#include "if_index.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <syslog.h>

namespace frame = wex::daemon;

namespace
{

constexpr std::size_t kHeadWords = 3;
// The request word that names the feature privilege to wexd.
constexpr uint32_t kPrivilegeRequest[2] = {6, 0};

// Walks every range in list order, handing each index to visit; stops
// early (false) when visit refuses one, so a service that never ends a
// range cannot keep the walk going.
template <typename Visit> bool for_each_index(std::span<const intf_range> ranges, Visit visit)
{
    for (const intf_range &range : ranges) {
        uint32_t index = range.first;
        if (!visit(index))
            return false;
        for (uint32_t next = 0;
             if_index_get_next_if_index_in_range(range.first, range.last, index, &next) == 0; index = next) {
            if (!visit(next))
                return false;
        }
    }
    return true;
}

int send_indexes(int32_t q, uint32_t value1, uint32_t value2, std::span<const intf_range> ranges,
                 uint32_t count)
{
    const std::size_t words = kHeadWords + count;
    wex::MallocPtr<uint32_t> message(static_cast<uint32_t *>(wex::mem_alloc(words * sizeof(uint32_t))));
    if (!message)
        return -1;
    uint32_t *at = message.get();
    *at++ = value1;
    *at++ = value2;
    *at++ = count;
    for_each_index(ranges, [&at](uint32_t index) {
        *at++ = index;
        return true;
    });
    const std::span<const uint32_t> all(message.get(), words);
    if (frame::send_one_way(q, ASCII_CFG_SERVER_QUEUE, WEX_OPC_DEFAULT_INTF_EXECUTE, std::as_bytes(all),
                            frame::SendOptions::none) < 0) {
        syslog(LOG_CRIT, "Could not communicate with ascii_cfg_server\n");
        return -1;
    }
    return 0;
}

} // namespace

extern "C" {

WEX_API int wex_execute_default_intf(int32_t q, uint32_t value1, uint32_t value2,
                                     intf_range_list ranges) noexcept
{
    // A count beyond the entries the list holds is a damaged list: nothing
    // of it is sent rather than a part or bytes past it.
    if (ranges.count > std::size(ranges.ranges))
        return -1;
    const std::size_t pairs = ranges.count;
    wex::MallocPtr<intf_range> work(
        static_cast<intf_range *>(wex::mem_alloc((pairs ? pairs : 1) * sizeof(intf_range))));
    if (!work) {
        std::puts("error: allocating memory for range list");
        return 1;
    }
    std::memcpy(work.get(), ranges.ranges, pairs * sizeof(intf_range));
    const std::span<const intf_range> list(work.get(), pairs);
    uint32_t count = 0;
    const bool within = for_each_index(list, [&count](uint32_t) { return ++count <= WEX_DEFAULT_INTF_MAX; });
    if (!within) {
        std::printf("Error:Too many interfaces in the list (Max %d)\n", WEX_DEFAULT_INTF_MAX + 1);
        return -1;
    }
    return send_indexes(q, value1, value2, list, count);
}

WEX_API int wex_get_feature_privilege(int32_t q) noexcept
{
    frame::Reply reply;
    const std::optional<int> status = frame::request_over_transport(
        q, frame::kFeaturePrivilegeGet, std::as_bytes(std::span(kPrivilegeRequest)), reply);
    if (!status) {
        std::puts("Error on recv");
        return -1;
    }
    // The first word of the answer; none when it carries none.
    int32_t value = -1;
    if (*status >= 0 && reply.len >= sizeof value)
        std::memcpy(&value, reply.bytes.get(), sizeof value);
    return value;
}

} // extern "C"
