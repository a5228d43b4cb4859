/** @file
 * The shell's parse-tree model: node and parameter records, parameter type
 * codes, the 128-bit mask, the parse-tree root, string and number utilities,
 * the tree table, the dumps and the byte-order conversion of tree images. */
#ifndef WEX_PARSE_TREE_H
#define WEX_PARSE_TREE_H

#include <wex/wex_api.h>

WEX_BEGIN_DECLS

/* ---- Parameter type codes --------------------------------------------- */

/** @{ */
/** Plain text kinds: 0 or a single bit each. */
#define TYPE_NONE 0x00000000u
#define TYPE_STRING 0x00000001u
#define TYPE_LINE 0x00000002u
#define TYPE_URI 0x00000004u
#define TYPE_DNS_NAME 0x00000008u
#define TYPE_USERATHOST 0x00000010u
#define TYPE_LEN_VALUE 0x00000020u
/** @} */

/** @{ */
/** Typed values: bit 30 set, family in bits 20 to 23, member in the low byte. */
#define TYPE_IP 0x40000001u
#define TYPE_IPV4 0x40000002u
#define TYPE_IPV6 0x40000004u
#define TYPE_IPV4_OR_IPV6 0x40000006u
#define TYPE_INET_NAME 0x40000008u
#define TYPE_INT 0x40100001u
#define TYPE_INT_RANGE 0x40100002u
#define TYPE_HEX 0x40100004u
#define TYPE_INT_MULTI_RANGE 0x40100008u
#define TYPE_HEX_RANGE 0x40100010u
#define TYPE_HEX_MULTI_RANGE 0x40100080u
#define TYPE_INTERFACE 0x40200001u
#define TYPE_INTERFACE_RANGE 0x40200002u
#define TYPE_MAC 0x40300001u
#define TYPE_WWN 0x40300002u
#define TYPE_LUN 0x40300004u
#define TYPE_VSAN 0x40400001u
#define TYPE_VSAN_RANGE 0x40400002u
#define TYPE_VSAN_MULTI_RANGE 0x40400004u
#define TYPE_GUID 0x40500001u
#define TYPE_FC_ID 0x40600001u
#define TYPE_COMMUNITY 0x40700001u
/** @} */

/* ---- Parse-tree image records ------------------------------------------ */

#define WEX_NODE_SIZE 1000u        /**< bytes of a node record */
#define WEX_NODE_MAX_PARAMS 2u     /**< parameter descriptors of a node */
#define WEX_NODE_MAX_CHILDREN 192u /**< children of a node */
/** A walk visits depths 0 to WEX_TREE_MAX_DEPTH - 1. */
#define WEX_TREE_MAX_DEPTH 31

/** @{ */
/** `action` flag bits. */
#define WEX_ACTION_TERMINAL 0x4u
#define WEX_ACTION_SUBMODE 0x8u
/** @} */

/** Parameter descriptor: 100 bytes inside a node record. */
typedef struct param_descriptor {
    uint32_t type;      /**< a TYPE_* code */
    wex_u64_a4 mask;    /**< interface-type mask of the interface types */
    char help[64];      /**< help text of the parameter */
    uint32_t min;       /**< lower bound; the one number of TYPE_STRING and TYPE_URI */
    uint32_t max;       /**< upper bound of the value range */
    uint32_t subtype;   /**< 0, or a parameter subtype shown in place of the range */
    uint32_t extra32;   /**< carried, not interpreted */
    wex_u64_a4 extra64; /**< carried, not interpreted */
} param_descriptor;

WEX_ASSERT_SIZE(param_descriptor, 100);
WEX_ASSERT_OFFSET(param_descriptor, type, 0);
WEX_ASSERT_OFFSET(param_descriptor, mask, 4);
WEX_ASSERT_OFFSET(param_descriptor, help, 12);
WEX_ASSERT_OFFSET(param_descriptor, min, 76);
WEX_ASSERT_OFFSET(param_descriptor, max, 80);
WEX_ASSERT_OFFSET(param_descriptor, subtype, 84);
WEX_ASSERT_OFFSET(param_descriptor, extra32, 88);
WEX_ASSERT_OFFSET(param_descriptor, extra64, 92);

/** Node record: 1000 bytes; node i of an image starts at byte i * 1000. */
typedef struct parse_tree_node {
    char NodeName[64];                 /**< the node's name */
    char Token[32];                    /**< the word of a command this node matches */
    char Help[64];                     /**< its help text */
    char SubMode_Help[32];             /**< the help of the submode the node enters */
    char SubMode_Prompt[16];           /**< the prompt of that submode */
    char Func_ID[48];                  /**< the function that runs the command */
    char module_id[24];                /**< the module that registered the node */
    char subtree_config_generator[48]; /**< the subtree's configuration generator */
    uint16_t optional;                 /**< 1 for the first word of an optional part */
    uint16_t bcp_msg_type;             /**< the backend message type */
    uint32_t action;                   /**< WEX_ACTION_* bits and others, carried as they are */
    uint32_t token_id;                 /**< the token id */
    uint32_t command_id;               /**< the command id of a node that completes a command */
    uint8_t permissions_mask[16];      /**< a byte string, never byte-swapped */
    param_descriptor params[2];        /**< the first param_count are valid */
    uint16_t internal_func_id;         /**< the internal function number */
    uint16_t param_count;              /**< valid entries of params, 0 to 2 */
    uint16_t asciigen_priority;        /**< the node's priority in ascii generation */
    uint16_t child_count;              /**< valid entries of children, 0 to 192 */
    uint16_t children[192];            /**< node indices, the first child_count valid */
    uint8_t childlist_mask[32];        /**< a set bit makes that child a link */
    wex_u64_a4 interface_mask;         /**< the node's interface-type mask */
    uint8_t reserved[8];               /**< carried unchanged */
} parse_tree_node;

WEX_ASSERT_SIZE(parse_tree_node, 1000);
WEX_ASSERT_OFFSET(parse_tree_node, NodeName, 0);
WEX_ASSERT_OFFSET(parse_tree_node, Token, 64);
WEX_ASSERT_OFFSET(parse_tree_node, Help, 96);
WEX_ASSERT_OFFSET(parse_tree_node, SubMode_Help, 160);
WEX_ASSERT_OFFSET(parse_tree_node, SubMode_Prompt, 192);
WEX_ASSERT_OFFSET(parse_tree_node, Func_ID, 208);
WEX_ASSERT_OFFSET(parse_tree_node, module_id, 256);
WEX_ASSERT_OFFSET(parse_tree_node, subtree_config_generator, 280);
WEX_ASSERT_OFFSET(parse_tree_node, optional, 328);
WEX_ASSERT_OFFSET(parse_tree_node, bcp_msg_type, 330);
WEX_ASSERT_OFFSET(parse_tree_node, action, 332);
WEX_ASSERT_OFFSET(parse_tree_node, token_id, 336);
WEX_ASSERT_OFFSET(parse_tree_node, command_id, 340);
WEX_ASSERT_OFFSET(parse_tree_node, permissions_mask, 344);
WEX_ASSERT_OFFSET(parse_tree_node, params, 360);
WEX_ASSERT_OFFSET(parse_tree_node, internal_func_id, 560);
WEX_ASSERT_OFFSET(parse_tree_node, param_count, 562);
WEX_ASSERT_OFFSET(parse_tree_node, asciigen_priority, 564);
WEX_ASSERT_OFFSET(parse_tree_node, child_count, 566);
WEX_ASSERT_OFFSET(parse_tree_node, children, 568);
WEX_ASSERT_OFFSET(parse_tree_node, childlist_mask, 952);
WEX_ASSERT_OFFSET(parse_tree_node, interface_mask, 984);
WEX_ASSERT_OFFSET(parse_tree_node, reserved, 992);

/** 128-bit mask: bit n is bit 0x80 >> (n % 8) of bits[n / 8]. */
typedef struct bmask128 {
    uint32_t length;  /**< number of mask bytes: 16 */
    uint8_t bits[16]; /**< the 128 bits, most significant bit first */
} bmask128;

WEX_ASSERT_SIZE(bmask128, 20);
WEX_ASSERT_OFFSET(bmask128, length, 0);
WEX_ASSERT_OFFSET(bmask128, bits, 4);

/* ---- Generator tree (the tree generator's in-memory pointer tree) ------- */

struct generator_node;

/** One element of a generator node's name list. */
typedef struct generator_name {
    char name[64];               /**< the name */
    struct generator_name *next; /**< the next element, NULL at the end */
} generator_name;

/** One element of a generator node's child list. */
typedef struct generator_child {
    struct generator_child *next; /**< the next element, NULL at the end */
    struct generator_node *child; /**< the child node */
} generator_child;

/** The part of the generator's node that this library reads. Words 4 and 5
 * belong to the generator. 64-bit size: 80 bytes. */
typedef struct generator_node {
    char *nodename;              /**< the node's name */
    char *Token;                 /**< its word */
    char *Help;                  /**< its help text */
    void *generator_words[2];    /**< the generator's own */
    char *funcID;                /**< its function identifier */
    char *modID;                 /**< its module identifier */
    int32_t array_index;         /**< its index in the flattened image */
    generator_name *name_list;   /**< the names the node also answers to */
    generator_child *child_list; /**< its children */
} generator_node;

#if UINTPTR_MAX == 0xFFFFFFFFu
WEX_ASSERT_SIZE(generator_name, 68);
WEX_ASSERT_SIZE(generator_child, 8);
WEX_ASSERT_SIZE(generator_node, 40);
WEX_ASSERT_OFFSET(generator_node, Token, 4);
WEX_ASSERT_OFFSET(generator_node, Help, 8);
WEX_ASSERT_OFFSET(generator_node, funcID, 20);
WEX_ASSERT_OFFSET(generator_node, modID, 24);
WEX_ASSERT_OFFSET(generator_node, array_index, 28);
WEX_ASSERT_OFFSET(generator_node, name_list, 32);
WEX_ASSERT_OFFSET(generator_node, child_list, 36);
#else
WEX_ASSERT_SIZE(generator_node, 80);
#endif

/* ---- Tree table ----------------------------------------------------------- */

#define WEX_TREE_TABLE_CAPACITY 512 /**< entries of a tree table */

/** One registered parse tree; also the payload of tree registration. */
typedef struct tree_table_entry {
    char module_id[24];     /**< at most 23 characters */
    char par_file_name[64]; /**< at most 63 characters */
} tree_table_entry;

WEX_ASSERT_SIZE(tree_table_entry, 88);
WEX_ASSERT_OFFSET(tree_table_entry, module_id, 0);
WEX_ASSERT_OFFSET(tree_table_entry, par_file_name, 24);

/** Registered trees in insertion order; entries 0 to last_index are valid. */
typedef struct tree_table {
    tree_table_entry entries[WEX_TREE_TABLE_CAPACITY]; /**< the entries, 0 to last_index in use */
    int32_t last_index;                                /**< -1 when empty */
} tree_table;

WEX_ASSERT_SIZE(tree_table, 45060);
WEX_ASSERT_OFFSET(tree_table, entries, 0);
WEX_ASSERT_OFFSET(tree_table, last_index, 45056);

#define WEX_SUBTREE_LOCATION_SIZE 256 /**< capacity of a subtree path's location */

/** Where a subtree is found: a path type and a location text. */
typedef struct subtree_path {
    uint32_t type;                            /**< the kind of path */
    char location[WEX_SUBTREE_LOCATION_SIZE]; /**< where the subtree is, terminated */
} subtree_path;

WEX_ASSERT_SIZE(subtree_path, 260);
WEX_ASSERT_OFFSET(subtree_path, location, 4);

/* ---- Records and root ----------------------------------------------------- */

/** Returns mask unchanged: a parameter-type mask and a parameter type share one
 * 64-bit representation. */
WEX_API uint64_t wex_get_param_type_from_mask(uint64_t mask) WEX_NOEXCEPT;

/** Sets mask bit i of dst for each bit i (0 to 31) set in value; clears
 * nothing and leaves the length word alone. Returns 0. */
WEX_API int32_t bmask128_uint32_copy(bmask128 *dst, uint32_t value) WEX_NOEXCEPT;

/** Stores the process-wide parse-tree root (the caller's, kept by pointer).
 * Returns 0. */
WEX_API int32_t wex_parse_tree_root_set(void *root) WEX_NOEXCEPT;

/** Returns the stored parse-tree root, or NULL if none was set. */
WEX_API void *wex_parse_tree_root_get(void) WEX_NOEXCEPT;

/* ---- Strings that may be NULL (a NULL source is the empty string) ------- */

/** Length of s, 0 for NULL. */
WEX_API uint32_t robust_strlen(const char *s) WEX_NOEXCEPT;

/** Copies the whole of src (empty for NULL) into dst, which must hold it. */
WEX_API void robust_strcpy(char *dst, const char *src) WEX_NOEXCEPT;

/** Copies at most size - 1 characters of src into dst (size >= 1), pads
 * with NUL as strncpy does and always terminates dst. */
WEX_API void robust_strncpy(char *dst, const char *src, uint32_t size) WEX_NOEXCEPT;

/** Appends src to dst, size being the capacity of the whole of dst; dst
 * stays terminated within size bytes, or unchanged when it is full. */
WEX_API void robust_strncat(char *dst, const char *src, uint32_t size) WEX_NOEXCEPT;

/** Case-insensitive comparison; b NULL gives -1, a NULL (b not) gives 1. */
WEX_API int32_t robust_strcasecmp(const char *a, const char *b) WEX_NOEXCEPT;

/** Sorting comparator of node records by the text 64 bytes in (`Token`). */
WEX_API int32_t treelink_lexicograph_cmp(const void *a, const void *b) WEX_NOEXCEPT;

/** Sorting comparator of generator nodes by their `Token`. */
WEX_API int32_t treegen_lexicograph_cmp(const void *a, const void *b) WEX_NOEXCEPT;

#define STRING_BUFFER_SIZE 4096 /**< room of the string utilities' working texts */

/** Stores in *out a new copy of str without leading and trailing blanks
 * (0x20) and returns its length; *out is NULL and the result 0 when str is
 * NULL, nothing is left or memory runs out. The caller frees *out. */
WEX_API uint32_t strtrim(const char *str, char **out) WEX_NOEXCEPT;

/** Reads a signed integer: 0x for hexadecimal, 0 for octal, else decimal. */
WEX_API int32_t convert_str_to_int(const char *s) WEX_NOEXCEPT;

/** Reads an unsigned decimal number; 0 when s holds none. */
WEX_API uint32_t convert_str_to_uint(const char *s) WEX_NOEXCEPT;

/** Reads a hexadecimal number, with or without 0x; 0 when s holds none. */
WEX_API uint64_t convert_str_to_uint64(const char *s) WEX_NOEXCEPT;

/* ---- Tree table ----------------------------------------------------------- */

/** Fills e from the two texts (NULL gives an empty field); a text longer
 * than its field is cut to fit. */
WEX_API void set_tree_table_entry(tree_table_entry *e, const char *module_id,
                                  const char *par_file_name) WEX_NOEXCEPT;

/** Copies src into dst. */
WEX_API void copy_tree_table_entry(const tree_table_entry *src, tree_table_entry *dst) WEX_NOEXCEPT;

/** Appends a copy of e; returns 0, or -1 with the table unchanged when full. */
WEX_API int32_t insert_entry_in_tree_table(tree_table *t, const tree_table_entry *e) WEX_NOEXCEPT;

/** Returns the index of the first entry with exactly this par file name, or
 * -1 when there is none. */
WEX_API int32_t search_entry_in_tree_table(const tree_table *t, const char *par_file_name) WEX_NOEXCEPT;

/** Removes entry index, closing the gap; returns 0, or -1 with the table
 * unchanged when index is not a valid entry. */
WEX_API int32_t delete_entry_from_tree_table(tree_table *t, int32_t index) WEX_NOEXCEPT;

/** Fills a subtree path record (the location cut to its field). Returns 0. */
WEX_API int32_t populate_subtree_path(subtree_path *p, uint32_t type, const char *location) WEX_NOEXCEPT;

/* ---- Dumps on standard output ------------------------------------------ */

/** Prints "label:s " unless s is NULL or empty. */
WEX_API void print_str(const char *label, const char *s) WEX_NOEXCEPT;

/** Prints "label:v " unless v is 0. */
WEX_API void print_int(const char *label, int32_t v) WEX_NOEXCEPT;

/** Prints "label:v " (as a signed 64-bit decimal) unless v is 0. */
WEX_API void print_u_l_long(const char *label, uint64_t v) WEX_NOEXCEPT;

/** Prints "label:0x", the len bytes from last to first in hexadecimal, and
 * a blank. */
WEX_API void print_hex_value(const char *label, const uint8_t *bytes, int32_t len) WEX_NOEXCEPT;

/** Prints a parameter descriptor as "<Parameter ...{family}>". */
WEX_API void display_param(const param_descriptor *p) WEX_NOEXCEPT;

/** Prints node index of a host-order image and its subtree; links print as
 * one line. Ends the process with status -1 past the maximum depth. */
WEX_API void display_array_tree(const uint8_t *image, uint32_t index, int32_t depth) WEX_NOEXCEPT;

/** Prints a generator tree; ends the process with status -1 past the
 * maximum depth. */
WEX_API void display_ptr_tree(const generator_node *node, int32_t depth) WEX_NOEXCEPT;

/** Prints "Child: <Token> " for each child of node, without a line end. */
WEX_API void displayChildren(const generator_node *node) WEX_NOEXCEPT;

/** Prints a subtree path record on one line. */
WEX_API void displayPath(const subtree_path *p) WEX_NOEXCEPT;

/** Prints one tree-table entry on one line; nothing for NULL. */
WEX_API void show_tree_table_entry(const tree_table_entry *e) WEX_NOEXCEPT;

/** Prints the first n entries of a tree table between banner lines. */
WEX_API void show_tree_table(const tree_table_entry *entries, uint32_t n) WEX_NOEXCEPT;

/** Returns 1 when a walk from node index, following links too, would go
 * deeper than the maximum depth (a link loop always does), else 0. */
WEX_API int32_t cycle_check(const uint8_t *image, uint32_t index, int32_t depth) WEX_NOEXCEPT;

/* ---- Byte order -------------------------------------------------------------- */

/** Converts one descriptor from host to network order, in place. */
WEX_API void hton_parameter(param_descriptor *p) WEX_NOEXCEPT;

/** Converts one descriptor from network to host order, in place; a mask with
 * bit 0 set also gains bits 18 and 19. */
WEX_API void ntoh_parameter(param_descriptor *p) WEX_NOEXCEPT;

/** Converts node index and its non-link subtree to network order, in place.
 * Ends the process with status -1 past the maximum depth. */
WEX_API void hton_array_tree(uint8_t *image, uint32_t index, int32_t depth) WEX_NOEXCEPT;

/** Converts node index and its non-link subtree to host order, in place.
 * Ends the process with status -1 past the maximum depth. */
WEX_API void ntoh_array_tree(uint8_t *image, uint32_t index, int32_t depth) WEX_NOEXCEPT;

#define WEX_SUBTREE_HEADER_WORDS 6 /**< 32-bit words before a subtree image */

/** Converts the six words of a subtree header to network order. */
WEX_API void hton_subtree_header(uint32_t *header) WEX_NOEXCEPT;

/** Converts the six words of a subtree header to host order. */
WEX_API void ntoh_subtree_header(uint32_t *header) WEX_NOEXCEPT;

/* ---- Parse-tree file store ------------------------------------------------- */

/** Width of one name of the HA file set and of the dynamic file names. */
#define WEX_FILE_NAME_SIZE 64

/** Sets the HA file set: a directory and a table of count names, both kept
 * by pointer and owned by the caller. Returns 0. */
WEX_API int32_t file_ha_init(const char *directory, const char (*names)[WEX_FILE_NAME_SIZE],
                             int32_t count) WEX_NOEXCEPT;

/** The next name of the set in rotation, its marker removed so no reader
 * chooses it while it is rewritten; NULL when the set is empty or the
 * name's marker path does not fit in 127 characters. */
WEX_API const char *file_ha_current_writable_filename(void) WEX_NOEXCEPT;

/** Marks name complete: its marker "<directory>/<name>_done" holds the commit
 * number. 0, or -1 when the marker cannot be written. */
WEX_API int32_t file_ha_commit(const char *name) WEX_NOEXCEPT;

/** The newest complete name (marker time, then marker number), or NULL. */
WEX_API const char *file_ha_current_readable_filename(void) WEX_NOEXCEPT;

/** @{ */
/** The current and the next name of the main tree's file ("main_tree%u.par"). */
WEX_API extern char current_dynamic_par_file[WEX_FILE_NAME_SIZE];
WEX_API extern char new_dynamic_par_file[WEX_FILE_NAME_SIZE];
/** @} */

/** The highest number of a "main_tree<n>." file in the directory, at least 1. */
WEX_API uint32_t wexd_init_sequence_no(const char *directory) WEX_NOEXCEPT;

/** Starts the numbering in directory: removes the highest-numbered main-tree
 * file and makes the next number current. Returns current_dynamic_par_file. */
WEX_API char *wexd_dynamic_parfile_init(const char *directory) WEX_NOEXCEPT;

/** Takes the next number into new_dynamic_par_file and returns it. */
WEX_API char *wexd_get_new_dynamic_parfile_name(void) WEX_NOEXCEPT;

/** Makes the new name current; returns current_dynamic_par_file. */
WEX_API char *wexd_update_current_dynamic_parfile_name(void) WEX_NOEXCEPT;

/** Returns current_dynamic_par_file. */
WEX_API char *wexd_get_current_dynamic_parfile_name(void) WEX_NOEXCEPT;

/** Compresses the default tree "/tarn/etc/par/default/main_tree.par" with
 * gzip: -1 when it does not exist, else gzip's wait status. */
WEX_API int32_t wex_default_parse_tree_zip(void) WEX_NOEXCEPT;

/** Restores the default tree from its ".gz" unless it exists (then 0), and
 * makes it readable and writable by all: 0, or -1 when it still does not exist. */
WEX_API int32_t wex_default_parse_tree_unzip(void) WEX_NOEXCEPT;

WEX_END_DECLS

#endif /* WEX_PARSE_TREE_H */
