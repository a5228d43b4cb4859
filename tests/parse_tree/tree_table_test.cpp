#include <wex/parse_tree.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace
{

std::unique_ptr<tree_table> empty_table()
{
    auto t = std::make_unique<tree_table>();
    std::memset(t.get(), 0, sizeof *t);
    t->last_index = -1;
    return t;
}

tree_table_entry entry(const char *module, const char *par)
{
    tree_table_entry e;
    std::memset(&e, 0x5A, sizeof e);
    set_tree_table_entry(&e, module, par);
    return e;
}

void insert(tree_table *t, const char *module, const char *par)
{
    const tree_table_entry e = entry(module, par);
    ASSERT_EQ(insert_entry_in_tree_table(t, &e), 0);
}

} // namespace

TEST(TreeTable, InsertsInOrderUpTo512AndRefusesThe513th)
{
    auto t = empty_table();
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "a.par"), -1);
    insert(t.get(), "vsh", "a.par");
    EXPECT_EQ(t->last_index, 0);
    EXPECT_STREQ(t->entries[0].module_id, "vsh");
    EXPECT_STREQ(t->entries[0].par_file_name, "a.par");

    for (int i = 1; i < 512; ++i)
        insert(t.get(), "m", ("t" + std::to_string(i) + ".par").c_str());
    EXPECT_EQ(t->last_index, 511);
    const auto before = std::make_unique<tree_table>(*t);
    const tree_table_entry extra = entry("m", "extra.par");
    EXPECT_EQ(insert_entry_in_tree_table(t.get(), &extra), -1);
    EXPECT_EQ(std::memcmp(t.get(), before.get(), sizeof *t), 0);
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "t511.par"), 511);
}

TEST(TreeTable, SearchIsExactAndFindsTheFirstOfTwins)
{
    auto t = empty_table();
    insert(t.get(), "one", "a.par");
    insert(t.get(), "two", "dup.par");
    insert(t.get(), "three", "dup.par");
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "dup.par"), 1);
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "DUP.par"), -1);
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "dup"), -1);
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "two"), -1) << "module_id takes no part";
}

TEST(TreeTable, DeleteClosesTheGapAndRefusesInvalidIndices)
{
    auto t = empty_table();
    insert(t.get(), "A", "a.par");
    insert(t.get(), "B", "b.par");
    insert(t.get(), "C", "c.par");

    const auto before = std::make_unique<tree_table>(*t);
    for (int32_t bad : {-1, 3, 511, 600})
        EXPECT_EQ(delete_entry_from_tree_table(t.get(), bad), -1) << bad;
    EXPECT_EQ(std::memcmp(t.get(), before.get(), sizeof *t), 0);

    EXPECT_EQ(delete_entry_from_tree_table(t.get(), 0), 0);
    EXPECT_EQ(t->last_index, 1);
    EXPECT_STREQ(t->entries[0].module_id, "B");
    EXPECT_STREQ(t->entries[1].module_id, "C");
    EXPECT_STREQ(t->entries[2].module_id, "C") << "old last slot left in place";

    EXPECT_EQ(delete_entry_from_tree_table(t.get(), 1), 0);
    EXPECT_EQ(t->last_index, 0);
    EXPECT_EQ(delete_entry_from_tree_table(t.get(), 0), 0);
    EXPECT_EQ(t->last_index, -1);
    EXPECT_EQ(delete_entry_from_tree_table(t.get(), 0), -1);
}

TEST(TreeTable, DamagedLastIndexNeverLeadsOutsideTheEntries)
{
    auto t = empty_table();
    t->last_index = 9000;
    const tree_table_entry e = entry("m", "x.par");
    EXPECT_EQ(insert_entry_in_tree_table(t.get(), &e), -1);
    EXPECT_EQ(search_entry_in_tree_table(t.get(), "x.par"), -1);
    EXPECT_EQ(delete_entry_from_tree_table(t.get(), 511), 0);
    EXPECT_EQ(t->last_index, 510);

    t->last_index = -7;
    EXPECT_EQ(insert_entry_in_tree_table(t.get(), &e), -1);
    EXPECT_EQ(search_entry_in_tree_table(t.get(), ""), -1);
}

TEST(TreeTableEntry, FieldsAreCutToFitAndNullIsEmpty)
{
    const std::string long_module(30, 'm');
    const std::string long_par(100, 'p');
    tree_table_entry e = entry(long_module.c_str(), long_par.c_str());
    EXPECT_EQ(std::string(e.module_id), std::string(23, 'm'));
    EXPECT_EQ(std::string(e.par_file_name), std::string(63, 'p'));

    e = entry(nullptr, "b.par");
    EXPECT_STREQ(e.module_id, "");
    EXPECT_STREQ(e.par_file_name, "b.par");

    tree_table_entry copy;
    std::memset(&copy, 0x11, sizeof copy);
    copy_tree_table_entry(&e, &copy);
    EXPECT_STREQ(copy.module_id, "");
    EXPECT_STREQ(copy.par_file_name, "b.par");

    subtree_path p;
    std::memset(&p, 0x22, sizeof p);
    EXPECT_EQ(populate_subtree_path(&p, 7, "/bootflash/t.par"), 0);
    EXPECT_EQ(p.type, 7u);
    EXPECT_STREQ(p.location, "/bootflash/t.par");
    const std::string long_location(300, 'l');
    EXPECT_EQ(populate_subtree_path(&p, 1, long_location.c_str()), 0);
    EXPECT_EQ(std::string(p.location), std::string(WEX_SUBTREE_LOCATION_SIZE - 1, 'l'));
    populate_subtree_path(&p, 2, nullptr);
    EXPECT_STREQ(p.location, "");
}
