// State shared by the pieces of the parse-tree file store.
#ifndef WEX_PARSE_TREE_FILE_STORE_H
#define WEX_PARSE_TREE_FILE_STORE_H

namespace wex::tree
{

// The directory of the HA file set and of the dynamic tree files, owned by
// the caller: one setting for both, the last call that sets it wins.
extern const char *store_directory;

} // namespace wex::tree

#endif
