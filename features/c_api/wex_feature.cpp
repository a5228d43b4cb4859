// The C interface of the feature runtime: a feature's C callbacks behind
// the runtime's Feature, and no exception past them.
#include "feature_runtime.h"

#include <wex-feature/wex_feature.h>

#include <new>
#include <vector>

#define WEX_FEATURE_API extern "C" __attribute__((visibility("default")))

struct wex_feature_sink {
    std::vector<wex_shell::ConfigBlock> blocks;
};

namespace
{

// What one command may print: the runtime cuts longer output anyway.
constexpr std::size_t kOutputBytes = 64 * 1024;

class CFeature final : public wex_feature::Feature
{
  public:
    CFeature(const wex_feature_ops &ops, void *context) : ops_(ops), context_(context) {}

    const char *module() const override { return ops_.module; }
    // Registration and the queue are the feature's own, before serving.
    uint32_t default_queue() const override { return 0; }
    bool register_types(int) override { return true; }

    wex_feature::Applied apply(const pinfo &command) override
    {
        output_[0] = '\0';
        int32_t changed = 0;
        const int32_t status = ops_.apply(context_, &command, output_.data(), output_.size(), &changed);
        output_.back() = '\0';
        return {status, output_.data(), status == 0 && changed != 0};
    }

    std::vector<wex_shell::ConfigBlock> running_config() const override
    {
        wex_feature_sink sink;
        ops_.running_config(context_, &sink);
        return std::move(sink.blocks);
    }

  private:
    wex_feature_ops ops_;
    void *context_;
    std::vector<char> output_ = std::vector<char>(kOutputBytes); // taken once, for every command
};

} // namespace

WEX_FEATURE_API int32_t wex_feature_add_block(wex_feature_sink *sink, uint32_t priority, const char *text)
{
    if (!sink || !text)
        return -1;
    try {
        sink->blocks.push_back({priority, text});
    } catch (const std::bad_alloc &) {
        return -1;
    }
    return 0;
}

WEX_FEATURE_API int32_t wex_feature_serve(int q, const wex_feature_ops *ops, void *context)
{
    if (!ops || !ops->module || !ops->apply || !ops->running_config)
        return 1;
    try {
        CFeature feature(*ops, context);
        return wex_feature::serve(feature, q);
    } catch (const std::bad_alloc &) {
        return 1;
    }
}
