// The project's sample files, as tests read them.
#ifndef WEX_TEST_SAMPLES_H
#define WEX_TEST_SAMPLES_H

#include <string>

namespace wex_test
{

// The text of examples/trees/NAME, one of the sample grammars.
std::string sample_grammar(const std::string &name);

} // namespace wex_test

#endif
