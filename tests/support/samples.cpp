#include "support/samples.h"

#include <fstream>
#include <iterator>

namespace wex_test
{

std::string sample_grammar(const std::string &name)
{
    std::ifstream in(std::string(WEX_EXAMPLES_DIR) + "/trees/" + name);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

} // namespace wex_test
