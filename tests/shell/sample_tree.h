// The main tree the sample grammars compile to, loaded as the shell loads
// it, once per test program.
#ifndef WEX_TEST_SAMPLE_TREE_H
#define WEX_TEST_SAMPLE_TREE_H

#include "main_tree.h"

namespace wex_test
{

const wex_shell::MainTree &sample_tree();

} // namespace wex_test

#endif
