/* The C interface used from C: records, constants and calls through
 * libwex.so, as a feature process written in C uses them. */
#include <wex/wex.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int passed, failed;

static void check(int ok, const char *what)
{
    if (ok) {
        ++passed;
        return;
    }
    ++failed;
    printf("FAILED: %s\n", what);
}

static void check_records(void)
{
    parse_tree_node node;
    param_descriptor *p = &node.params[1];
    memset(&node, 0, sizeof node);
    check(sizeof node == WEX_NODE_SIZE, "node record is 1000 bytes");
    check((char *)&node.interface_mask - (char *)&node == 984, "interface_mask at 984");
    check((char *)p - (char *)&node == 460, "second descriptor at 460");
    check(offsetof(param_descriptor, extra64) == 92, "extra64 at 92");
    check(sizeof(tree_table) == 45060, "tree table is 45060 bytes");
}

static void check_strings(void)
{
    char dst[8];
    robust_strncpy(dst, "abcdefghij", sizeof dst);
    check(strcmp(dst, "abcdefg") == 0, "robust_strncpy cuts at size - 1");
    robust_strncat(dst, "x", sizeof dst);
    check(strcmp(dst, "abcdefg") == 0, "robust_strncat on a full buffer");
    check(robust_strcasecmp(NULL, NULL) == -1, "two missing strings compare as -1");
    check(convert_str_to_uint64("ff") == 255u, "hexadecimal without prefix");
}

static void check_tree_table(void)
{
    static tree_table table;
    tree_table_entry e;
    table.last_index = -1;
    set_tree_table_entry(&e, "vsh", "vsh.par");
    check(insert_entry_in_tree_table(&table, &e) == 0, "insert");
    check(search_entry_in_tree_table(&table, "vsh.par") == 0, "search");
    check(delete_entry_from_tree_table(&table, 1) == -1, "delete past last_index refused");
}

static void check_byte_order(void)
{
    uint32_t header[WEX_SUBTREE_HEADER_WORDS] = {1, 0, 0, 0, 0, 0x01020304};
    const unsigned char *bytes = (const unsigned char *)header;
    hton_subtree_header(header);
    check(bytes[3] == 1 && bytes[20] == 1 && bytes[23] == 4, "subtree header in network order");
}

int main(void)
{
    check_records();
    check_strings();
    check_tree_table();
    check_byte_order();
    printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
