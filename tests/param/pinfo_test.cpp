// Building and editing the argument list of a command-parameter record.
#include <wex/param.h>
#include <wex/parse_tree.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <tuple>
#include <vector>

namespace
{

std::unique_ptr<pinfo> empty_record()
{
    auto info = std::make_unique<pinfo>();
    pinfo_basic_copy(info.get(), nullptr);
    return info;
}

// The argument pointers in use, in slot order.
std::vector<param_arg *> in_use(const pinfo &info)
{
    return std::vector<param_arg *>(info.args, info.args + info.param_count);
}

TEST(Pinfo, InsertSetAndDeleteKeepTheArgumentOrder)
{
    param_arg a{}, b{}, c{}, d{}, e{};
    auto info = empty_record();
    pinfo_insert_arg(info.get(), &a);
    pinfo_insert_arg(info.get(), &b);
    pinfo_insert_arg(info.get(), &c);
    pinfo_insert_arg_at_index(info.get(), &d, 1);
    EXPECT_EQ(in_use(*info), (std::vector<param_arg *>{&a, &d, &b, &c}));
    pinfo_insert_arg_at_index(info.get(), &e, 4); // the count: appends
    pinfo_insert_arg_at_index(info.get(), &e, 0);
    EXPECT_EQ(in_use(*info), (std::vector<param_arg *>{&e, &a, &d, &b, &c, &e}));

    pinfo_set_arg(info.get(), &c, 1);
    EXPECT_EQ(info->args[0], &c);
    EXPECT_EQ(info->param_count, 6);

    pinfo_delete_arg(info.get(), 1);
    EXPECT_EQ(in_use(*info), (std::vector<param_arg *>{&a, &d, &b, &c, &e}));
    pinfo_delete_arg(info.get(), 5); // the last: only the count drops
    EXPECT_EQ(in_use(*info), (std::vector<param_arg *>{&a, &d, &b, &c}));
    EXPECT_EQ(info->args[4], &e);
    pinfo_delete_all_arg(info.get());
    EXPECT_EQ(info->param_count, 0);
    EXPECT_EQ(info->args[0], &a);

    // All 64 slots can be filled, and the last one moved into.
    for (int i = 0; i < WEX_PINFO_MAX_ARGS - 1; ++i)
        pinfo_insert_arg(info.get(), &a);
    pinfo_insert_arg_at_index(info.get(), &b, 0);
    EXPECT_EQ(info->param_count, 64);
    EXPECT_EQ(info->args[63], &a);
    EXPECT_EQ(info->args[0], &b);
}

TEST(Pinfo, LatestInterfaceMaskComesFromTheLastInterfaceArgument)
{
    param_arg intf{}, number{}, range{}, zero_mask{};
    populate_param_arg(&intf, 1, TYPE_INTERFACE, 0, 0x10, nullptr);
    populate_param_arg(&number, 2, TYPE_INT, 0, 0xFF, nullptr);
    populate_param_arg(&range, 3, TYPE_INTERFACE_RANGE, 0, 0x40, nullptr);
    populate_param_arg(&zero_mask, 4, TYPE_INTERFACE, 0, 0, nullptr);
    const struct {
        std::vector<param_arg *> args;
        int result;
        uint64_t mask;
    } cases[] = {
        {{&intf, &number, &range}, 0, 0x40},
        {{&intf, &number}, 0, 0x10},
        {{&intf, &zero_mask}, -1, 0},
        {{&number}, -1, 0},
        {{}, -1, 0},
    };
    for (const auto &c : cases) {
        auto info = empty_record();
        for (param_arg *arg : c.args)
            pinfo_insert_arg(info.get(), arg);
        uint64_t mask = 0xDEAD;
        EXPECT_EQ(pinfo_get_latest_intf_mask(info.get(), &mask), c.result) << c.args.size();
        EXPECT_EQ(mask, c.mask);
    }
    // A mask above 32 bits is carried whole.
    populate_param_arg(&range, 3, TYPE_INTERFACE_RANGE, 0, 0x100000000ull, nullptr);
    auto info = empty_record();
    pinfo_insert_arg(info.get(), &range);
    uint64_t mask = 0;
    EXPECT_EQ(pinfo_get_latest_intf_mask(info.get(), &mask), 0);
    EXPECT_EQ(mask, 0x100000000ull);
}

TEST(Pinfo, BasicCopyCarriesTheContextButNoArguments)
{
    auto source = std::make_unique<pinfo>();
    auto *bytes = reinterpret_cast<unsigned char *>(source.get());
    for (std::size_t i = 0; i < sizeof(pinfo); ++i)
        bytes[i] = static_cast<unsigned char>(i * 31 + 7);
    source->param_count = 5;
    auto copy = std::make_unique<pinfo>();
    pinfo_basic_copy(copy.get(), source.get());
    EXPECT_EQ(copy->param_count, 0);
    source->param_count = 0;
    EXPECT_EQ(std::memcmp(copy.get(), source.get(), sizeof(pinfo)), 0);

    pinfo_basic_copy(copy.get(), nullptr);
    const pinfo zero{};
    EXPECT_EQ(std::memcmp(copy.get(), &zero, sizeof(pinfo)), 0);
}

TEST(Pinfo, PopulatersFillOnlyTheirFieldsAndSlots)
{
    param_arg arg{};
    arg.addr_type = TYPE_IPV4;
    int value = 0;
    populate_param_arg(&arg, -3, TYPE_INTERFACE, 99, 0x123456789ull, &value);
    EXPECT_EQ(std::tie(arg.token_id, arg.type, arg.intf_mask, arg.value, arg.addr_type),
              std::make_tuple(-3, uint32_t{TYPE_INTERFACE}, 0x123456789ull, static_cast<void *>(&value),
                              uint32_t{TYPE_IPV4}));

    intf_range_list list{};
    list.count = 7;
    populate_intf_range(&list, 64, 11, 12);
    const intf_range_list before = list;
    populate_intf_range(&list, 65, 1, 2);
    populate_intf_range(&list, 0xFFFFFFFF, 1, 2);
    EXPECT_EQ(std::memcmp(&list, &before, sizeof list), 0);
    EXPECT_EQ(list.ranges[64].first + list.ranges[64].last + list.count, 11u + 12u + 7u);
}

} // namespace
